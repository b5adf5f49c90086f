// A render target: a texture with its framebuffer, a record in memory of the same size and format, and a
// small program that copies a texture into it.
#pragma once

#include <QOpenGLContext>
#include <QOpenGLShaderProgram>
#include <QPointer>
#include <cstdint>

#include "QTD/frame/Properties.h"
#include "QTD/image/PixelFormat.h"
#include "ZynImage.h"

class QGLSurface;
class QGLImage;
struct GLPixels;

// The block in a record's list of attachments by which the next stage finds the picture on the card. Made
// with malloc, freed together with the record.
struct QGLImageAttachment {
  static constexpr uint32_t kTag = 5466;

  uint32_t first = 100;
  uint32_t tag = kTag;
  uint32_t second = 520;
  uint32_t third = 0;
  QGLImage* image = nullptr;  // not owned
  uint64_t unused = 0;
  void* next = nullptr;
};
static_assert(sizeof(void*) != 8 || sizeof(QGLImageAttachment) == 40, "the attachment is 40 bytes");

// The picture on the card that belongs to a record; null (0) for a null record and for one in memory alone,
// such as a host's, whatever its field `attachments` says.
QGLImage* AttachedImage(const ZynImage* record);
uint32_t AttachedTexture(const ZynImage* record);

// `init` once in its life. Between `begin` and `end` of the surface; no lock of its own. The pixels of the
// record are stale until `readGPU`.
//
// Parameters: "filter", "surface", "readGPU", "size.x", "size.y", "pixeltype"; for the copy:
// "image.flip.vert" (1 turns the picture), "image.color.coef" (factor; 0 or absent: to the full range),
// "image.color.mono" (1 spreads red).
class QGLImage {
 public:
  explicit QGLImage(QGLSurface* usedSurface);
  virtual ~QGLImage();
  QGLImage(const QGLImage&) = delete;
  QGLImage& operator=(const QGLImage&) = delete;

  // Either may be null: size and code come from the image, and the list's have the last word.
  virtual bool init(const ZynImage* image, QTD::PROPERTIES* list);
  virtual void done();
  virtual QTD::PROPERTIES& properties();
  virtual bool isValid();
  virtual bool render();  // draws what the caller has bound, texture and program, into this target
  virtual bool bind();    // drawing goes into this target
  virtual void unbind();
  // Brings the picture into memory, null: the own record's. The pixels that were written, null when they
  // could not be: the target's `imageSize` is the lines' at its pitch, or without gaps, to the byte.
  virtual uint8_t* readGPU(ZynImage* target);
  virtual bool copyTexture(uint32_t name, QTD::PROPERTIES* list);
  // Uploads an image (null: the own record's pixels) into the texture that the caller has bound. With
  // "image.flip.vert" 1 the image's own lines are mirrored, left to right, before: the host's buffer changes.
  // Kept.
  virtual bool fillGPU(const ZynImage* image);
  virtual uint32_t texture();
  virtual uint32_t program();
  // Activates the copying program; without parameters with factor 1, no turn and no spreading. Its name, 0
  // without one.
  virtual uint32_t useProgram(bool withParameters, QTD::PROPERTIES* list);
  virtual bool releaseProgram();
  virtual ZynImage* image();  // owned by this
  virtual uint32_t checkError(const char* where);

  // Whether the record's pixels are those of the texture: nothing was drawn or uploaded since `readGPU`
  // brought them.
  bool IsRead() const { return read; }
  QOpenGLContext* Context() const { return context; }  // that the texture lies on; null once it has gone

 protected:
  // What a copy is made with; 1 alone counts for `mono` and `flip`.
  struct Copy {
    double coefficient = 1.0;
    int mono = 0;
    int flip = 0;
  };

  bool isCurrent();    // between `begin` and `end` of the surface that `init` found
  bool isLive();       // the same, and there is a framebuffer
  bool findSurface();  // false where none is between its `begin` and `end`
  bool make(bool sourceIsBottomUp);
  bool makeRecord(bool sourceIsBottomUp);
  bool attachTo();  // the record
  void deleteRecord();
  void makeTexture(const GLPixels& pixels);
  bool makeFramebuffer(const GLPixels& pixels);
  bool attach(int internalFormat);
  void makeProgram();
  Copy readCopy(QTD::PROPERTIES& list) const;
  uint32_t use(const Copy& copy);  // the program; its name, 0 without one

  QGLSurface* surface;  // not owned
  QTD::PixelFormat format;
  QTD::PROPERTIES parameters;
  ZynImage* record = nullptr;  // owned
  bool read = false;
  uint32_t textureName = 0;
  uint32_t framebuffer = 0;
  uint32_t renderbuffer = 0;
  QOpenGLShaderProgram shader;
  QTD::PROPERTIES uniforms;                 // uniform name to location
  int locations[5] = {-1, -1, -1, -1, -1};  // the same, not to be parsed for each picture
  QPointer<QOpenGLContext> context;         // that the names belong to
};
