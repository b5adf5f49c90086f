// The region of the picture that the user marks with the mouse.
#pragma once

#include <QObject>
#include <QPointF>
#include <QRect>
#include <functional>

#include "ZynDisplay.h"

class QMouseEvent;

namespace zynview {

// In image pixels; drawn by the display, so that it stays on its place when the picture is zoomed and moved.
// While marking, the left button and Esc are taken before the display sees them: it does not pan. Wheel,
// right button and the other keys are the display's as ever. GUI thread.
class RegionMarker : public QObject {
 public:
  explicit RegionMarker(ZynDisplayProcessor* target);  // not owned
  ~RegionMarker() override;

  // The region has become another one, also while it is dragged.
  std::function<void(const QRect& region)> onChange;
  // Marking has begun or ended.
  std::function<void(bool on)> onMarking;

  // After each `Initialize`: a region that is not within the new picture goes.
  void SetPicture(const ZynImage& format);

  // The key: begins; ends what was begun; or takes the region away.
  void Toggle();
  void Begin();
  void End();  // a drag that is under way is taken back
  bool IsMarking() const { return marking; }

  // What lies off the picture is cut off; an empty region is none.
  void Mark(const QRect& wanted);
  const QRect& Region() const { return region; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void Press(const QMouseEvent& event);
  void DragTo(const QMouseEvent& event);
  void Drop();
  bool PixelAt(const QPointF& inWindow, QPoint* pixel) const;
  void Draw();

  ZynDisplayProcessor* display;
  QRect picture, region;
  bool marking = false;
  bool taken = false;    // the display did not hear of the left button's press
  bool pressed = false;  // and the press was at a place of the picture
  bool dragged = false;  // far enough that it is no click
  QPointF pressedAt;     // in the window
  QPoint first;          // image pixel
  QRect before;          // the region when the button went down
};

}  // namespace zynview
