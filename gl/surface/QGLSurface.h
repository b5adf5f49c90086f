// The drawing surface of a window that OpenGL paints: it owns the context, and every other OpenGL object
// reaches the driver through it.
#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPointer>
#include <QTimer>
#include <QWindow>
#include <cstdint>
#include <memory>

#include "QTD/screen/QTDSurface.h"

// Desktop OpenGL in the compatibility profile. GUI thread, all operations but `resize` and those that the
// base names. Everything but `init`, `done`, `begin`, `end`, `flush` and `describe` stands between `begin`
// and `end`, which nest. Errors of the driver stop nothing: `checkError` keeps them, and who cares asks
// `LastError`.
//
// `properties`: "state" ("created", "ready", "failed", "deleted"), "smoothing", "window", "context",
// "thread", "functions", "area", "size", "program", "class", the limits "gl.renderbuffer", "gl.texture" and
// "gl.viewport" (pixels), "gl.vendor", "gl.version", "gl.strict", and "error", the text of the last one.
class QGLSurface : public QTDSurface, public QOpenGLFunctions {
 public:
  QGLSurface();
  ~QGLSurface() override;

  // Needs "window"; "size.x", "size.y", "area.pos.x", "area.pos.y", "area.dim.w", "area.dim.h" override what
  // is taken from the window. False where there is no context of the compatibility profile.
  bool init(QTD::PROPERTIES* list) override;
  bool done() override;
  void text(const char* string, int x, int y, const char* font, const ColorValue* color) override;
  // Makes the context current. Waits up to 3 s for that, but not again after it has waited in vain, until the
  // context was to be had. With "deletion" set it does so also where the window, or its native one, is gone:
  // the names on the context are still there. Not where another context is current then. Errors of the driver
  // are asked for in the outermost pass alone, here as in `end`.
  bool begin(QTD::PROPERTIES* list) override;
  void end(QTD::PROPERTIES* list, bool flush) override;
  // Swaps the buffers, at most once in 31 ms unless "force" is set. Waits for no other thread. A swap that
  // came too early, or found another thread inside, is made up for.
  void flush(QTD::PROPERTIES* list) override;
  bool isValid() override;
  std::string describe(const char* prefix) override;
  void polyline(const Points& points, const ColorValue* color, int width, int style) override;
  void line(int x1, int y1, int x2, int y2, const ColorValue* color, int width, int style) override;
  void rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) override;
  void fill(int x, int y, int w, int h, const ColorValue* color) override;
  // The texture of the picture's `QGLImage`; nothing without one. `source` counts in 0 to 1.
  void image(const ZynImage* picture, const QTD::RectD* target, const QTD::RectD* source) override;
  // Takes two further arguments of type int: whether `where` stands in the text, and whether an invalid
  // operation counts too. The driver's error, 0 without one.
  int checkError(const char* where, ...) override;
  // Draws the unit square of the bound texture over a picture of that size: the one call of every shader
  // pass.
  virtual void renderTexture(int width, int height);

  uint32_t LastError() const { return lastError; }
  QOpenGLContext* Context() const { return context; }  // null outside `init` to `done`
  // Whether calls of the driver reach the context: it is the one that is current on this thread.
  bool isActive() const;
  double pixelRatio() const;  // device pixels to one pixel of the window; 1 without a window

 protected:
  // What both kinds of surface do with the context current: resolve the functions, set the blending, make the
  // text.
  void prepareFunctions();
  void publishDriver();  // the limits and the names of the driver
  // A point in OpenGL's coordinates, which run upward.
  int toGLX(int x);
  double toGLY(int y);

  uint32_t lastError = 0;            // of the driver; 1 after a text that could not be drawn
  QPointer<QOpenGLContext> context;  // owned here; a QGLSurfaceRef holds another surface's
  QPointer<QWindow> window;          // not owned; the host may delete it first
  int64_t lastFlushTime = 0;         // milliseconds
  bool isCurrent = false;            // `begin` made the context current

 private:
  bool makeContext();
  bool makeCurrent();
  bool makeCurrentElsewhere();
  void leave();  // the outermost pass
  bool onContextThread() const;
  void swapLater(int64_t delay);
  void paintAgain() const;

  bool waitedInVain = false;                 // for the context, and it was not to be had since
  int depth = 0;                             // of `begin` within `begin`
  std::unique_ptr<QOffscreenSurface> spare;  // in place of the window, where only something is deleted
  std::unique_ptr<QTimer> late;              // makes up for a swap that came too early
};
