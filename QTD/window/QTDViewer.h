// The widget that the host's parent widget receives: the window, its scroll bars, and the chain's last
// stages.
#pragma once

#include <QPointer>
#include <QWidget>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/Properties.h"
#include "QTD/window/ParentLayout.h"
#include "QTD/window/UpdateEvent.h"
#include "ZynDisplay.h"
#include "ZynImage.h"

class QScrollBar;
class QTDWindow;

namespace QTD {
class Messenger;
}

// Made and deleted on the GUI thread, by the controller or together with the host's widget. It lives in that
// widget, and so does its vertical bar; the window lives in a container inside it. Whichever of them goes
// first, the others do not touch it afterwards.
class QTDViewer : public QWidget, public QTD::ComponentImpl {
  Q_OBJECT

 public:
  enum Error : uint32_t {
    kSuccess = 0,
    kStageFailed = 1,  // a stage could not be initialised or attached
    kBadArgument = 7,  // a null image or chain, or no parent
    kNotReady = 8,     // no window, an image of zero size, or no surface
    kNoMemory = 9,     // an image record or a stage could not be made
  };

  QTDViewer(QWidget* parentWidget, bool opengl);
  ~QTDViewer() override;

  // Adds "image.display" and "image.coloration" (switched off) to the chain; a code as in `Error`. GUI
  // thread.
  virtual uint32_t attachProcessor(const ZynImage* format, ZynImgProcessingChain* processor);
  virtual uint32_t releaseImages();
  // Shows the picture with the next painting; held as the window does. Any thread.
  virtual void setImage(const ZynImage* picture, bool forceUpdate);
  const ZynImage* Picture();  // that was set last; null without one
  virtual uint32_t attachGL(const ZynImage* format, ZynImgProcessingChain* processor);
  virtual uint32_t attachCPU(const ZynImage* format, ZynImgProcessingChain* processor);

  void setMessenger(QTD::Messenger* receiver);       // not owned, may be null
  void setDisplay(ZynDisplayProcessor* controller);  // not owned, may be null
  // Posts a repaint of the window, unless `setImage` runs at this moment; any thread.
  void redraw();

  QTDWindow* Window() const;  // null when it could not be made, or was deleted
  // Whoever uses the window under a lock of their own calls it with that held, when the window closes.
  void ForgetWindow();
  uint32_t LastError() const { return lastError; }
  bool IsOpenGL();
  // "system.opengl", "system.parentWidget" and, once the window is open, "surface" stand in the component's
  // list too.

 Q_SIGNALS:
  // The viewer is on its way out; window and picture still exist.
  void signalClosing();
  // The host deletes the window itself. It still exists, until `ForgetWindow` or the end of this signal.
  void signalWindowClosing();

 public Q_SLOTS:
  void slotDisplayImage(ZynImage* picture, bool forceUpdate);
  void slotDisplayImage(ZynImage* picture);
  void slotHorzSliderChanged(int value);
  void slotVertSliderChanged(int value);

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;  // of `container`
  void resizeEvent(QResizeEvent* event) override;

  QPointer<QTDWindow> window;              // owned by `container`
  ZynDisplayProcessor* display = nullptr;  // the controller, not owned
  std::atomic<uint32_t> lastError{kSuccess};
  QTD::PROPERTIES properties;
  std::recursive_mutex lock;  // guards `image`, the stage records and the window's lifetime
  ZynImage* stageSource = nullptr;
  ZynImage* stageOutput = nullptr;
  QPointer<QWidget> container;
  const ZynImage* image = nullptr;      // not owned
  QTD::Messenger* messenger = nullptr;  // not owned
  QPointer<QScrollBar> horzBar;
  QPointer<QScrollBar> vertBar;  // a child of the host's widget

 private:
  void makeBars();
  bool makeWindow(bool opengl);
  void makeNative();
  void joinScrollArea();
  void layOut(QWidget* parentWidget);
  void loseWindow();
  void dropContainer();
  void noteSurface();
  void scroll(int x, int y);
  uint32_t finish(uint32_t code);
  void note(const char* name, const std::string& value);

  QTD::ParentLayout place;
  QTD::PostedFlag posted = std::make_shared<std::atomic<bool>>(false);
};
