// The rubber band with which the user zooms on a part of the picture.
#pragma once

#include <QCursor>
#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QTimer>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "QTD/frame/Properties.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDInput.h"

class QTDWindow;
class QWidget;

// The rubber band alone: steps, limits and the zoom to a rectangle are those of QTDScreen. It is an input
// handler of its window, which asks it before its own. The window calls `begin` when a drag with the right
// button has gone far enough, `trackTo` for each movement, and `finish` at the release. Only keys go through
// the handler's interface: while a band is shown they are swallowed.
//
// GUI thread, all of it.
class QTDZoom : public QObject, public QTDInput {
  Q_OBJECT

 public:
  enum Mode : uint32_t { kNoZoom = 0, kZoomIn = 1, kZoomOut = 2 };

  explicit QTDZoom(QTDWindow* owner);  // not owned
  ~QTDZoom() override;

  // Shows a band that begins at `pressPos`, in global coordinates, or at the cursor; `growFromCenter` makes
  // that point its centre. False without a window, without its parent widget or with an empty window: there
  // is no band then. A null `target` keeps the present window.
  virtual bool begin(QTDWindow* target, const QPoint* pressPos, bool growFromCenter);
  // Takes the band away. With `result` it is first brought to the cursor, stored there in global coordinates,
  // and `CurrentMode` tells what is asked for. Without a band nothing happens.
  virtual void finish(QTD::RectI* result);
  // Brings the band to the cursor and works out what is asked for. With `result` the band is stored there
  // alone; without, it is drawn.
  virtual void trackTo(QTD::RectI* result);
  virtual void drawBand(const QTD::RectI* band);  // in global coordinates

  bool key(int code) override;

  bool IsActive() const { return !active.isNull() && !window.isNull(); }
  bool IsCentred() const { return fromCenter; }
  uint32_t CurrentMode() const { return mode; }
  uint32_t ShownMode() const { return lastMode; }  // by the cursor, from the band's begin on
  const std::string& ObjectID() const { return objectID; }

 public Q_SLOTS:
  void slotTimer();  // takes Shift into account while the mouse stands still

 protected:
  QTD::RectI centredBand(const QPoint& position, int smallest);
  QTD::RectI corneredBand(const QPoint& position, int smallest);
  void showMode(uint32_t shown);
  void refreshMode();

  QPointer<QTDWindow> window;
  QPointer<QWidget> active;  // the window's parent widget while the band is shown
  QPoint start;              // of the press, global
  QTD::RectI rect;           // the band, global
  uint32_t mode = kNoZoom;
  bool fromCenter = false;
  std::unique_ptr<QTimer> timer;
  uint32_t lastMode = kNoZoom;  // the mode that the cursor shows
  const QCursor cursors[3] = {Qt::ArrowCursor, Qt::CrossCursor, Qt::IBeamCursor};  // by mode

 public:
  QTD::PROPERTIES properties;  // keys: "adjust", "color", "skip.track", "rect.width"

 protected:
  std::string name;                                // stays empty
  std::string objectID;                            // of the band among the window's overlays
  bool begun = false;                              // and not ended, whether the parent still exists or not
  std::chrono::steady_clock::time_point lastTick;  // that asked the keyboard
};
