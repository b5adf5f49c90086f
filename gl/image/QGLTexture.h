// A texture and nothing else: a stage's input, filled from an image in memory.
#pragma once

#include <QOpenGLContext>
#include <QPointer>
#include <cstdint>

#include "QTD/frame/Properties.h"
#include "QTD/image/PixelFormat.h"
#include "ZynImage.h"

class QGLSurface;

// Between `begin` and `end` of the surface; no lock of its own. Parameters: "filter", "surface" (asked for
// where no surface was given), "size.x", "size.y", "pixeltype", and "texture", a texture's name that is
// adopted: with it the object owns none.
class QGLTexture {
 public:
  QGLTexture();
  virtual ~QGLTexture();
  QGLTexture(const QGLTexture&) = delete;
  QGLTexture& operator=(const QGLTexture&) = delete;

  // A size below 1 is taken from the list; no pixels are uploaded.
  virtual bool init(const QTD::PixelFormat& format, int width, int height, QTD::PROPERTIES* list);
  virtual bool init(const ZynImage* image, QTD::PROPERTIES* list);
  virtual void done();
  virtual bool isValid();
  virtual bool render();
  virtual bool bind();
  virtual void unbind();
  // Uploads the image at its own line pitch. False when its lines do not lie within its `imageSize`.
  virtual bool fill(const ZynImage* image);
  virtual void setTexture(uint32_t name);
  virtual uint32_t texture();
  virtual uint32_t checkError(const char* where);
  virtual QTD::PixelFormat& format();

  QTD::PROPERTIES& Parameters() { return parameters; }

 protected:
  bool isCurrent();    // between `begin` and `end` of the surface that `init` found
  bool isLive();       // there is a surface, and the driver knows the texture
  bool findSurface();  // false where none is between its `begin` and `end`
  void deleteOwn();
  bool make();  // the texture of the parameters' size
  bool fitsLimit(int64_t width, int64_t height);

  QGLSurface* surface = nullptr;  // not owned
  QTD::PixelFormat pixelFormat;
  QTD::PROPERTIES parameters;
  uint32_t textureName = 0;
  QPointer<QOpenGLContext> context;  // that the name belongs to
};
