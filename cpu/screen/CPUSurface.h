// The surface of a window, painted by the processor: a backing store and a painter on it.
#pragma once

#include <QPointer>
#include <QWindow>
#include <memory>

#include "QTD/screen/QTDSurface.h"
#include "cpu/screen/PictureBlit.h"

class CPUSurfaceText;
class QBackingStore;
class QPainter;

// GUI thread, except `resize`, which any thread may call: the backing store then follows on the GUI thread.
// All coordinates are window pixels; where the window has several device pixels to one, the picture's target
// is rounded to those and drawn in those. What draws does nothing outside a paint pass.
class CPUSurface : public QTDSurface {
 public:
  CPUSurface();
  ~CPUSurface() override;

  // Needs "window"; "size.x", "size.y", "area.pos.x", "area.pos.y", "area.dim.w", "area.dim.h" override what
  // is taken from the window.
  bool init(QTD::PROPERTIES* list) override;
  bool done() override;
  void resize(int width, int height) override;
  bool begin(QTD::PROPERTIES* list) override;
  void end(QTD::PROPERTIES* list, bool flush) override;
  void flush(QTD::PROPERTIES* list) override;
  bool isValid() override;
  std::string describe(const char* prefix) override;
  void polyline(const Points& points, const ColorValue* color, int width, int style) override;
  void rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) override;
  void fill(int x, int y, int w, int h, const ColorValue* color) override;
  // "RGB8" alone; its lines count as aligned to 32 bits, whatever `linePitch` says.
  void image(const ZynImage* picture, const QTD::RectD* target, const QTD::RectD* source) override;

 private:
  QTD::SizeI currentSize();
  QRect paintArea();  // the surface's size, cut to the backing store
  void resizeBackingStore(int width, int height);
  void followResize();  // brings the backing store to the size that `resize` was last told
  CPUSurfaceText* painterText() const;

  QPointer<QWindow> window;                     // not owned; the host may delete it first
  std::unique_ptr<QBackingStore> backingStore;  // null until `init`
  std::unique_ptr<QPainter> painter;            // only between `begin` and `end`
  PictureBlit blit;
  bool resized =
      false;  // `resize` was called since the backing store last followed; guarded by `lock`, like `size`
};
