// The window in which the picture appears.
#pragma once

#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QWindow>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/frame/CommandProcessor.h"
#include "QTD/frame/ComponentImpl.h"
#include "QTD/image/HeldRecords.h"
#include "QTD/screen/DrawObjects.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/screen/QTDSurface.h"
#include "QTD/window/KeyboardCommand.h"
#include "QTD/window/MouseNotification.h"
#include "QTD/window/QTDInput.h"
#include "QTD/window/UpdateEvent.h"
#include "QTD/window/ViewTracker.h"
#include "ZynImage.h"

class QScrollBar;
class QTDZoom;
class QWidget;

namespace QTD {
class Messenger;
}

// Owns the surface, the screen, the rubber band and the overlay store, paints on a posted update request, and
// turns mouse, wheel and keys into view changes and notifications.
//
// Order of locks: `inputLock`, `renderLock`, then those of the screen and of the overlay store. Host code,
// which notifications run, is called with none of them held: it may close or delete the window.
class QTDWindow : public QWindow, public QTDInput, public QTD::ComponentImpl, public QTD::CommandProcessor {
  Q_OBJECT

 public:
  QTDWindow(QWidget* parentWidget, bool opengl);
  ~QTDWindow() override;

  virtual bool open();  // makes surface, screen and rubber band; GUI thread
  // Deletes them; GUI thread. Waits for operations of other threads that are under way.
  virtual bool close();
  virtual bool isOpen();    // GUI thread
  virtual bool hasImage();  // any thread
  virtual void render();    // paints once; GUI thread (from another one it posts an update request)
  virtual void update();    // posts an update request; any thread
  // The picture is not owned but held: a record that goes by `ImageDelete` may do so at any time, another one
  // is taken away (null) before. Any thread; waits for a painting that is under way.
  virtual void setImage(const ZynImage* picture, bool refresh);
  virtual void resize(int width, int height);  // tells screen and overlays; any thread
  virtual QPoint cursorPos(bool global);       // GUI thread
  virtual QRect geometry(bool frame);          // any thread; off the GUI thread as it was last seen there
  virtual void mapToGlobal(QPoint& point);     // GUI thread
  virtual void mapFromGlobal(QPoint& point);   // GUI thread
  // Store a text or a rectangle over the window and answer its identifier; "objectID" of the list names a
  // known one. Any thread.
  virtual std::string overlayText(const char* id, const char* text, int x, int y,
                                  QTD::PROPERTIES* properties);
  virtual std::string overlayRect(const char* id, int x, int y, int w, int h, QTD::PROPERTIES* properties);
  virtual void scrollTo(int x, int y);  // a negative value leaves that axis; any thread
  // Bit 2 horizontal, bit 1 vertical; any thread. That a bar is enabled or disabled follows from the event
  // loop.
  virtual void syncScrollBars(int which);

  // QTD::CommandProcessor; any thread
  void Execute(const char* name, QTD::PROPERTIES* properties) override;
  std::string GetValue(const char* name, const char* fallback) override;
  void SetValue(const char* name, const char* value, bool flag) override;

  // QTDInput: the window's own handler; GUI thread
  bool mouseDown(int x, int y, bool left, bool flag) override;
  bool mouseMove(int x, int y, bool left) override;
  bool mouseUp(int x, int y, bool left, bool flag) override;
  bool mouseDouble(int x, int y, bool left) override;
  bool wheel(int delta) override;
  bool focusLost() override;
  bool key(int code) override;

  // Moves overlays and bars when the view has changed since they were last moved, without telling the host.
  // `render` does so before it paints, so that a change which nobody announced moves them too. Any thread.
  void followView();

  void setScrollBars(QScrollBar* horizontal, QScrollBar* vertical);  // GUI thread
  void setMessenger(QTD::Messenger* receiver);                       // not owned, may be null; any thread
  // What `close` does, without a word: whoever uses the screen under a lock of their own calls it with that
  // held, when it is about to go. GUI thread.
  void DropSurface();
  // Any thread that keeps the window from closing; null while it is closed.
  QTDSurface* Surface() const { return openSurface; }
  QTDScreen* Screen() const { return openScreen; }
  QTDZoom* Zoom() const { return zoom.get(); }  // null while closed; GUI thread
  QWidget* ParentWidget() const;                // the viewer widget; GUI thread
  QTD::DrawObjects& Objects() { return drawObjects; }

 Q_SIGNALS:
  // The window is on its way out, but still whole: who uses it on another thread, or holds what lies on its
  // surface, lets go of it here.
  void signalClosing();
  void signalClosed();          // nothing of it is left but the QWindow
  void signalSurfaceClosing();  // surface and screen go; they still exist, until `DropSurface`
  void signalSurfaceChanged();  // after `open` and `close`: `Surface` is another one, or none

 protected:
  bool event(QEvent* event) override;
  void exposeEvent(QExposeEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

  enum MouseMode : uint32_t { kIdle = 0, kPan = 1, kZoomRectangle = 2, kHeldByHost = 4 };
  enum Bars : int { kVertical = 1, kHorizontal = 2, kBothBars = 3 };

  // Changed on the GUI thread only, under `inputLock` and `renderLock`.
  std::unique_ptr<QTDSurface> surface;
  std::unique_ptr<QTDScreen> screen;
  std::unique_ptr<QTDZoom> zoom;
  std::atomic<QTDSurface*> openSurface{nullptr};  // as the pointers above, for readers without these locks
  std::atomic<QTDScreen*> openScreen{nullptr};
  const ZynImage* image = nullptr;  // written under `renderLock` and `imageLock`, as what holds it
  QTD::RecordHold imageHold;
  bool failed = false;  // `open` did not succeed
  QTD::DrawObjects drawObjects;
  QPointer<QWidget> parent;  // the viewer widget
  std::vector<QTDInput*> handlers;
  std::recursive_mutex handlersLock;  // guards `handlers` alone
  std::recursive_mutex renderLock;    // held while painting and while overlays are stored
  std::recursive_mutex inputLock;     // guards the state of the mouse; held while the view is fed from here
  QPoint pressPos;                    // last press: window pixels, for the right button global ones
  uint32_t mouseMode = kIdle;
  bool grabbed = false;
  bool rightPressed = false;  // the right button is down and no rectangle has begun
  uint32_t presses = 0;       // counts what begins or ends a press; guarded by `inputLock`
  QPointer<QScrollBar> horzBar;
  QPointer<QScrollBar> vertBar;
  std::atomic<QTD::Messenger*> messenger{nullptr};
  std::atomic<uint32_t> notificationFlags{QTD::kNotifyView | QTD::kNotifyButtons};
  QTD::KeyboardCommand keyboard;  // the keys that are not the view's own; guarded by `inputLock`

 private:
  bool onGuiThread() const;
  bool makeSurface(bool opengl);
  bool makeScreen(bool opengl);
  void replaceImage(const ZynImage* picture);

  // Events: asks the handlers in order until one has handled the event.
  template <typename Ask>
  void dispatch(Ask ask);
  std::vector<QTDInput*> currentHandlers();
  bool isHandler(const QTDInput* handler);

  // Mouse
  enum class Told { GoOn, Taken, Gone };
  bool wantsNotice(QTD::MouseNotice notice) const;
  Told tellHost(QTD::MouseNotice notice, const QPoint& position,
                std::unique_lock<std::recursive_mutex>& hold);
  void grabMouse();
  void releaseMouse();
  void showCursor(Qt::CursorShape shape);
  bool trackRectangle(QPoint position);
  void endRectangle(bool asShown);

  // Overlays and bars
  QTD::ViewState currentView();
  // Objects that are placed in the window are laid out again by an announced change of the view alone: some
  // placements move by their own height with each layout.
  enum class Moved { kAll, kBoundToPicture };
  void moveObjects(Moved which);
  void moveObject(const std::string& id, QTD::PROPERTIES& object);
  bool usesBar(int range);
  void syncBar(QScrollBar* bar, int position, int range, int page);
  void enableBarsSoon();
  void enableBars();
  void noteGeometry();
  void followScreen();

  mutable std::mutex
      imageLock;  // guards the pointer `image` and what it points at; nothing is locked while it is held
  std::atomic<uint64_t> imageID{0};  // of `image`, 0 without one
  QTD::PostedFlag posted = std::make_shared<std::atomic<bool>>(false);
  QTD::ViewTracker tracker;
  std::atomic<int> queuedBars{0};  // bars that a queued call is going to set
  bool enablingBars = false;       // a queued call is going to enable or disable bars; GUI thread
  QSize shownSize;                 // of the last resize event

  std::mutex geometryLock;  // guards the two rectangles
  QRect seenFrame;
  QRect seenInner;
};
