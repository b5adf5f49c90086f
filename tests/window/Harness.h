// What the tests of this room share: pictures of known colours, a viewer in a shown widget, events, a
// recording host.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QThread>
#include <QWheelEvent>
#include <QWidget>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/frame/Messenger.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "ZynPixelFormat.h"

namespace windowtest {

inline void Settle() {
  for (int round = 0; round < 5; ++round) {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
  }
}

// Runs the event loop until `done` holds; false when it never does.
inline bool WaitFor(const std::function<bool()>& done, int milliseconds = 5000) {
  QElapsedTimer timer;
  timer.start();
  while (!done()) {
    if (timer.elapsed() > milliseconds) return false;
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
    QThread::msleep(1);
  }
  return true;
}

inline bool OnX() {
  return QGuiApplication::platformName() == QLatin1String("xcb");
}

// An RGB8 picture that owns its pixels.
class Picture {
 public:
  using Color = std::function<QRgb(int x, int y)>;

  Picture(int width, int height, const Color& color) {
    record = QTD::ImageCreate(nullptr, static_cast<uint32_t>(width), height, ZYN_PIXEL_RGB8);
    record->imageID = 77;
    for (int y = 0; y < height; ++y) {
      uint8_t* line = record->imageData + static_cast<size_t>(y) * record->linePitch;
      for (int x = 0; x < width; ++x) {
        const QRgb pixel = color(x, y);
        *line++ = static_cast<uint8_t>(qRed(pixel));
        *line++ = static_cast<uint8_t>(qGreen(pixel));
        *line++ = static_cast<uint8_t>(qBlue(pixel));
      }
    }
  }
  Picture(int width, int height) : Picture(width, height, [](int, int) { return qRgb(10, 200, 30); }) {}
  ~Picture() { QTD::ImageDelete(record); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  ZynImage* Record() const { return record; }

 private:
  ZynImage* record = nullptr;
};

// The host's receiver of notifications.
class Host : public ZynDisplayCommand {
 public:
  struct Message {
    std::string name;
    QTD::ARGUMENTS arguments;
  };

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    std::function<void(const QTD::ARGUMENTS&)> call;
    uint32_t result = 0;
    {
      std::lock_guard<std::mutex> guard(lock);
      messages.push_back({name, args ? *args : QTD::ARGUMENTS()});
      call = action;
      const std::string code = args && args->count("code") ? (*args)["code"] : "";
      if (answers.count(code)) result = answers[code];
    }
    if (call) call(args ? *args : QTD::ARGUMENTS());
    return result;
  }

  void Answer(const std::string& code, uint32_t result) {
    std::lock_guard<std::mutex> guard(lock);
    answers[code] = result;
  }
  void OnMessage(std::function<void(const QTD::ARGUMENTS&)> what) {
    std::lock_guard<std::mutex> guard(lock);
    action = std::move(what);
  }
  std::vector<QTD::ARGUMENTS> Of(const std::string& code) {
    std::lock_guard<std::mutex> guard(lock);
    std::vector<QTD::ARGUMENTS> found;
    for (const Message& message : messages) {
      const auto entry = message.arguments.find("code");
      if (entry != message.arguments.end() && entry->second == code) found.push_back(message.arguments);
    }
    return found;
  }
  int CountOf(const std::string& name) {
    std::lock_guard<std::mutex> guard(lock);
    int count = 0;
    for (const Message& message : messages) count += message.name == name;
    return count;
  }
  // Posted messages arrive on the messenger's thread.
  bool WaitForCode(const std::string& code) {
    return WaitFor([&] { return !Of(code).empty(); });
  }
  void Clear() {
    std::lock_guard<std::mutex> guard(lock);
    messages.clear();
  }

 private:
  std::mutex lock;
  std::vector<Message> messages;
  std::map<std::string, uint32_t> answers;
  std::function<void(const QTD::ARGUMENTS&)> action;
};

// Counts the update requests that reach an object.
class UpdateCounter : public QObject {
 public:
  explicit UpdateCounter(QObject* watched) { watched->installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::UpdateRequest) ++count;
    return false;
  }
  int count = 0;
};

// A viewer in a widget of the host, with a window of exactly 400 by 300 pixels, shown and exposed.
class ViewerTest : public testing::Test {
 protected:
  static constexpr int kWidth = 400;
  static constexpr int kHeight = 300;

  void SetUp() override {
    widget = std::make_unique<QWidget>();
    viewer = new QTDViewer(widget.get(), false);
    window = viewer->Window();
    ASSERT_TRUE(window);
    QScrollBar* horz = Bar(Qt::Horizontal);
    QScrollBar* vert = Bar(Qt::Vertical);
    widget->setGeometry(60, 40, kWidth + vert->sizeHint().width(), kHeight + horz->sizeHint().height());
    widget->show();
    ASSERT_TRUE(WaitFor([&] { return window->isExposed() && window->width() == kWidth; }));
    Settle();
    ASSERT_EQ(QSize(kWidth, kHeight), window->size());
  }

  void TearDown() override {
    if (viewer) viewer->setImage(nullptr, false);
    widget.reset();
    messenger.RemoveReceiver(&host);
    Settle();
  }

  void ConnectHost(int flags = 7) {
    messenger.AddReceiver(&host);
    viewer->setMessenger(&messenger);
    SetFlags(flags);
  }
  void SetFlags(int flags) {
    QTD::PROPERTIES list;
    list.Set("flags", std::to_string(flags));
    window->Execute("cmd.notification.flags.set", &list);
  }

  QScrollBar* Bar(Qt::Orientation orientation) const {
    for (QScrollBar* bar : widget->findChildren<QScrollBar*>()) {
      if (bar->orientation() == orientation) return bar;
    }
    return nullptr;
  }

  void Show(const Picture& picture) {
    viewer->setImage(picture.Record(), true);
    Settle();
  }

  QImage Grab() const {
    Settle();
    return window->QWindow::screen()->grabWindow(window->winId()).toImage();
  }

  void Mouse(QEvent::Type type, int x, int y, Qt::MouseButton button) {
    const Qt::MouseButtons held =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(button);
    const bool move = type == QEvent::MouseMove;
    QPoint global(x, y);
    if (window) window->mapToGlobal(global);
    QMouseEvent event(type, QPointF(x, y), QPointF(global), move ? Qt::NoButton : button, held,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
  }
  void Press(int x, int y, Qt::MouseButton button = Qt::LeftButton) {
    Mouse(QEvent::MouseButtonPress, x, y, button);
  }
  void Move(int x, int y, Qt::MouseButton held = Qt::LeftButton) { Mouse(QEvent::MouseMove, x, y, held); }
  void Release(int x, int y, Qt::MouseButton button = Qt::LeftButton) {
    Mouse(QEvent::MouseButtonRelease, x, y, button);
  }
  void DoubleClick(int x, int y, Qt::MouseButton button = Qt::LeftButton) {
    Mouse(QEvent::MouseButtonDblClick, x, y, button);
  }
  void Wheel(int angle, int pixels = 0) {
    QWheelEvent event(QPointF(200, 150), QPointF(200, 150), QPoint(0, pixels), QPoint(0, angle), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(window, &event);
  }
  void LoseFocus() {
    QFocusEvent event(QEvent::FocusOut);
    QCoreApplication::sendEvent(window, &event);
  }

  std::unique_ptr<QWidget> widget;
  QPointer<QTDViewer> viewer;
  QPointer<QTDWindow> window;
  Host host;
  QTD::Messenger messenger;
};

inline QScrollBar* VerticalBar(const QWidget& host) {
  for (QScrollBar* bar : host.findChildren<QScrollBar*>()) {
    if (bar->orientation() == Qt::Vertical) return bar;
  }
  return nullptr;
}

}  // namespace windowtest
