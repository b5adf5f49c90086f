// The smallest host: a grey ramp that moves, handed over from a thread of its own.
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.resize(640, 480);
  window.show();

  constexpr uint32_t kWidth = 640, kHeight = 480;
  ZynImage image{};
  image.pixelType = ZYN_PIXEL_MONO8;
  image.width = kWidth;
  image.height = kHeight;
  image.linePitch = kWidth;
  image.imageSize = kWidth * kHeight;

  ZynDisplay* display = ZynDisplay_CreateComponent();
  if (ZynDisplay_Initialize(display, &window, nullptr, &image) != 0) return 1;

  std::atomic<bool> stop{false};
  std::thread camera([&] {
    std::vector<uint8_t> pixels(image.imageSize);
    ZynImage frame = image;
    frame.imageData = pixels.data();
    while (!stop) {
      ++frame.imageID;
      for (uint32_t i = 0; i < frame.imageSize; ++i)
        pixels[i] = static_cast<uint8_t>(i % kWidth + frame.imageID);
      ZynDisplay_DisplayVideo(display, &frame);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  });

  // With a number of milliseconds as argument the program ends by itself.
  if (argc > 1)
    QTimer::singleShot(QString::fromLocal8Bit(argv[1]).toInt(), &application, &QApplication::quit);
  const int result = QApplication::exec();
  stop = true;
  camera.join();
  ZynDisplay_DeleteComponent(display);
  return result;
}
