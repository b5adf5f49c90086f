// What the examples of the host guide share. Only public headers, as a host has them.
#pragma once

#include <ZynDisplay.h>
#include <ZynPixelFormat.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace guide {

// [texts]
// Pointers travel through parameters and arguments as the text that "%p" makes of them.
inline std::string PointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

inline void* PointerFrom(const std::string& text) {
  void* pointer = nullptr;
  return std::sscanf(text.c_str(), "%p", &pointer) == 1 ? pointer : nullptr;
}

// For commands of which nobody reads the arguments afterwards.
inline uint32_t Command(ZynDisplayProcessor* display, const char* name, QTD::ARGUMENTS arguments = {}) {
  return display->RunCommand(name, &arguments);
}
// [/texts]

// The value of a parameter; "none" where there is no such parameter.
inline std::string Parameter(ZynComponent* component, const char* name) {
  std::vector<char> text(1024);
  auto size = static_cast<uint32_t>(text.size());
  return component->GetParameterString(name, text.data(), &size) == 0 ? text.data() : "none";
}

// Runs the event loop until `done`, at most some seconds.
inline bool WaitFor(const std::function<bool()>& done, int milliseconds = 20000) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > milliseconds) return false;
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  }
  return true;
}

// The window in which a display shows its picture.
inline QWindow* DisplayWindow() {
  for (QWindow* window : QGuiApplication::allWindows()) {
    if (window->inherits("QTDWindow")) return window;
  }
  return nullptr;
}

// A place of the picture's window as the screen shows it.
inline QColor OnScreen(int x, int y) {
  QWindow* window = DisplayWindow();
  if (!window) return {};
  const QImage seen = window->screen()->grabWindow(window->winId()).toImage();
  return seen.valid(x, y) ? seen.pixelColor(x, y) : QColor();
}

// Whether a colour stands anywhere in a part of the window, or nearly, as thin letters do on a dark picture.
inline bool Stands(const QColor& colour, const QRect& part) {
  QWindow* window = DisplayWindow();
  const QImage seen = window->screen()->grabWindow(window->winId()).toImage();
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) {
      if (!seen.valid(x, y)) continue;
      const QColor found = seen.pixelColor(x, y);
      const auto near = [](int one, int other) { return std::abs(one - other) < 100; };
      if (near(found.red(), colour.red()) && near(found.green(), colour.green()) &&
          near(found.blue(), colour.blue()))
        return true;
    }
  }
  return false;
}

inline void Mouse(QEvent::Type type, int x, int y, Qt::MouseButton button) {
  const Qt::MouseButton changed = type == QEvent::MouseMove ? Qt::NoButton : button;
  const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? button : Qt::NoButton;
  QMouseEvent event(type, QPointF(x, y), QPointF(x, y), changed, held, Qt::NoModifier);
  QCoreApplication::sendEvent(DisplayWindow(), &event);
}

// An image with pixels of its own.
struct Picture {
  Picture(uint32_t pixelType, uint32_t width, uint32_t height) {
    record.pixelType = pixelType;
    record.width = width;
    record.height = height;
    record.linePitch = (pixelType >> 16 & 0xFF) / 8 * width;
    record.imageSize = record.linePitch * height;
    bytes.resize(record.imageSize);
    record.imageData = bytes.data();
  }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  uint16_t* Words() { return reinterpret_cast<uint16_t*>(bytes.data()); }
  void FillWords(uint16_t value) { std::fill_n(Words(), bytes.size() / 2, value); }

  ZynImage record{};
  std::vector<uint8_t> bytes;
};

// A widget on the screen and a controller in it.
class GuideTest : public testing::Test {
 protected:
  GuideTest() {
    widget.resize(420, 320);
    widget.show();
    display = ZynDisplayCPU::CreateComponent(&widget);
    settings = display->GetComponent();
  }
  ~GuideTest() override { ZynDisplayCPU::DeleteComponent(display); }

  // Initialises for the picture, shows it and waits until the window has drawn.
  void Show(const ZynImage& image) {
    ASSERT_EQ(display->Initialize(&image), 0u);
    ASSERT_EQ(display->DisplayVideo(&image), 0u);
    ASSERT_TRUE(WaitFor([this] { return InView(); }));
  }
  // Whether the window has a size and knows the picture's.
  bool InView() {
    QTD::ARGUMENTS view;
    return display->RunCommand("cmd.display.view.image", &view) == 1 && std::stod(view["dim.w"]) > 1 &&
           DisplayWindow() && DisplayWindow()->isExposed();
  }
  double Number(const char* name) {
    double value = 0;
    EXPECT_EQ(settings->GetParameterDouble(name, &value), 0u) << name;
    return value;
  }

  QWidget widget;
  ZynDisplayProcessor* display = nullptr;
  ZynComponent* settings = nullptr;
};

}  // namespace guide
