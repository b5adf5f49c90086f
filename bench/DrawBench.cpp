// Drawing a 12-megapixel picture into a window of 1000x750: the surface against the painter.
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QWindow>
#include <memory>
#include <vector>

#include "QTD/frame/Text.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"
#include "cpu/screen/CPUSurface.h"
#include "cpu/screen/MEMSurface.h"

namespace {

constexpr int kWidth = 4000;
constexpr int kHeight = 3000;
constexpr int kWindowWidth = 1000;
constexpr int kWindowHeight = 750;
constexpr int kPitch = kWidth * 3;

// Drawing needs an application; the benchmarks make one where their main function has not.
void NeedApplication() {
  if (QCoreApplication::instance()) return;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "zynbench";
  static char* argv[] = {name, nullptr};
  static QGuiApplication application(argc, argv);
}

// A surface in a paint pass, a picture, and an image of the same kind for the peer to paint on.
class Scene {
 public:
  Scene() : bytes(size_t{kPitch} * kHeight) {
    NeedApplication();
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
    record.pixelType = ZYN_PIXEL_RGB8;
    record.bitDepth = 8;
    record.bitsPerPixel = 24;
    record.channels = 3;
    record.width = kWidth;
    record.height = kHeight;
    record.linePitch = kPitch;
    record.imageSize = static_cast<uint32_t>(bytes.size());
    record.imageData = bytes.data();

    window = std::make_unique<QWindow>();
    window->resize(kWindowWidth, kWindowHeight);
    window->create();
    QTD::PROPERTIES list;
    list.Set("window", QTD::ToText(static_cast<const void*>(window.get())));
    surface.init(&list);
    surface.begin(nullptr);
    peerCanvas = QImage(kWindowWidth, kWindowHeight, QImage::Format_RGB32);
    peer = std::make_unique<QPainter>(&peerCanvas);
  }
  ~Scene() { surface.done(); }

  QImage lines(int x, int y, int width, int height) const {
    return QImage(bytes.data() + y * kPitch + x * 3, width, height, kPitch, QImage::Format_RGB888);
  }
  void drawPlainly(const QTD::RectD& target) {
    const QPixmap pixmap = QPixmap::fromImage(lines(0, 0, kWidth, kHeight));
    peer->drawPixmap(QRectF(target.x, target.y, target.width, target.height), pixmap,
                     QRectF(0, 0, kWidth, kHeight));
  }

  std::vector<uint8_t> bytes;
  ZynImage record{};
  std::unique_ptr<QWindow> window;
  CPUSurface surface;
  QImage peerCanvas;
  std::unique_ptr<QPainter> peer;
};

void DrawAgainstPlain(benchmark::State& state, const QTD::RectD& target, double reach) {
  Scene scene;
  bench::Compare(
      state, reach, [&] { scene.surface.image(&scene.record, &target, nullptr); },
      [&] { scene.drawPlainly(target); });
}

// The whole picture fitted into the window.
void DrawFitted(benchmark::State& state) {
  DrawAgainstPlain(state, {0, 0, kWindowWidth, kWindowHeight}, 12);
}

// Three window pixels to a picture pixel, somewhere in the middle.
void DrawEnlarged(benchmark::State& state) {
  DrawAgainstPlain(state, {-5000, -4000, 3 * kWidth, 3 * kHeight}, 12);
}

// One to one, against the painter's drawing of the visible part, which is wrapped and not copied.
void DrawOneToOne(benchmark::State& state) {
  Scene scene;
  constexpr int kX = 1503, kY = 1101;
  const QTD::RectD target{-kX, -kY, kWidth, kHeight};
  const QImage visible = scene.lines(kX, kY, kWindowWidth, kWindowHeight);
  bench::Compare(
      state, 1, [&] { scene.surface.image(&scene.record, &target, nullptr); },
      [&] { scene.peer->drawImage(QPoint(0, 0), visible); });
}

// A line of 40 characters blended into the picture, against the painter's text on a QImage that wraps it.
void StampText(benchmark::State& state) {
  Scene scene;
  MEMSurface memory;
  memory.init(nullptr);
  QTD::PROPERTIES list;
  list.Set("image", QTD::ToText(static_cast<const void*>(&scene.record)));
  memory.begin(&list);
  ColorValue color(0x00FFFF);
  color.mode = 1;
  const char* words = "Frame 123456 taken at 12:34:56.789 (42%)";
  QImage picture(scene.bytes.data(), kWidth, kHeight, kPitch, QImage::Format_RGB888);
  QPainter painter(&picture);
  painter.setFont(QFont(QStringLiteral("Cambria"), 11));
  painter.setPen(Qt::yellow);
  bench::Compare(
      state, 1, [&] { memory.text(words, 100, 100, "default", &color); },
      [&] { painter.drawText(100, 200, QString::fromLatin1(words)); });
}

BENCHMARK(DrawFitted)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(DrawEnlarged)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(DrawOneToOne)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(StampText)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
