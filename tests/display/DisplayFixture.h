// What the tests of the display share: a parent widget on the screen, images, and waiting with the event loop
// running.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QWidget>
#include <atomic>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"

namespace display_test {

constexpr uint32_t Composed(uint32_t code) {
  return 0x80FF0000u | code;
}

// Runs the event loop until `done`, at most some seconds.
inline bool WaitFor(const std::function<bool()>& done, int milliseconds = 10000) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > milliseconds) return false;
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  }
  return true;
}

// Lets everything that is queued happen.
inline void Settle(int milliseconds = 50) {
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < milliseconds) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

// An image with pixels of its own, as a host would make it.
class HostImage {
 public:
  HostImage(uint32_t pixelType, uint32_t width, uint32_t height, uint32_t linePitch = 0, uint8_t level = 0) {
    const uint32_t lineBytes = (((pixelType >> 16) & 0xFF) * width + 7) / 8;
    record.structSize = 96;
    record.pixelType = pixelType;
    record.width = width;
    record.height = height;
    record.linePitch = linePitch ? linePitch : lineBytes;
    record.imageSize = record.linePitch * height;
    pixels.assign(record.imageSize, level);
    record.imageData = pixels.data();
  }
  HostImage(const HostImage&) = delete;
  HostImage& operator=(const HostImage&) = delete;

  ZynImage record{};
  std::vector<uint8_t> pixels;
};

// Counts notifications, and may run some code of the host's in them.
class Receiver : public ZynDisplayCommand {
 public:
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    const std::string message = name;
    std::function<void(const std::string&)> code;
    {
      std::lock_guard<std::mutex> guard(lock);
      if (message == "notification.image" && args) results.push_back((*args)["result"]);
      if (message == "notification.image" && args) lastArguments = *args;
      names.push_back(message);
      code = onMessage;
    }
    if (code) code(message);
    return 0;
  }
  std::size_t Images() {
    std::lock_guard<std::mutex> guard(lock);
    return results.size();
  }
  std::string LastResult() {
    std::lock_guard<std::mutex> guard(lock);
    return results.empty() ? "" : results.back();
  }
  QTD::ARGUMENTS LastArguments() {
    std::lock_guard<std::mutex> guard(lock);
    return lastArguments;
  }

  // What the host's code does in notifications.
  void OnMessage(std::function<void(const std::string&)> code) {
    std::lock_guard<std::mutex> guard(lock);
    onMessage = std::move(code);
  }

 private:
  std::mutex lock;  // guards what follows
  std::function<void(const std::string&)> onMessage;
  std::vector<std::string> results, names;
  QTD::ARGUMENTS lastArguments;
};

class DisplayTest : public testing::Test {
 protected:
  DisplayTest() {
    parent.resize(200, 150);
    parent.show();
    display = std::make_unique<QTDDisplay>(&parent, false);
  }

  // Initialises for the format and asks for image notifications.
  void Start(const HostImage& image) {
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    display->AddNotification(&receiver);
    display->SetParameterInt("image.notification.flags.set", 1);
    WaitFor([this] { return display->Viewer() != nullptr; });
    Settle(20);
  }
  std::string Parameter(const char* name) { return display->Parameters().GetString(name, "absent"); }
  bool WaitForImages(std::size_t count) {
    return WaitFor([this, count] { return receiver.Images() >= count; });
  }

  QWidget parent;
  Receiver receiver;
  std::unique_ptr<QTDDisplay> display;
};

}  // namespace display_test
