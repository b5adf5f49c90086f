// The stages of the OpenGL variant against those of the processor, each on the same 3-megapixel BayerRG12p
// frame as it comes out of the stage before, and the drawing into a window of 1000x750. Needs a window system
// with OpenGL; on a driver in software the rows tell how much slower it is.
#include <QApplication>
#include <QOpenGLFunctions>
#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "QTD/display/QTDDisplay.h"
#include "QTD/screen/SurfacePass.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "ZynPixelFormat.h"
#include "bench/Ratio.h"

namespace {

constexpr uint32_t kWidth = 2048, kHeight = 1536;
constexpr int kWindowWidth = 1000, kWindowHeight = 750;
constexpr const char* kStages[] = {
    "unpack",        "image.unpacked", "bayer",         "image.colorcorrection",
    "image.overlay", "image.output",   "image.display", "image.coloration"};

// A display that stands in a shown window and has run one frame.
class Shown {
 public:
  explicit Shown(bool opengl) : bytes(size_t{kWidth} * kHeight * 3 / 2) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 2654435761u >> 13);
    frame.pixelType = ZYN_PIXEL_BAYERRG12P;
    frame.bitDepth = 12;
    frame.width = kWidth;
    frame.height = kHeight;
    frame.linePitch = kWidth * 3 / 2;
    frame.imageSize = static_cast<uint32_t>(bytes.size());
    frame.imageData = bytes.data();
    frame.imageID = 1;
    parent.resize(kWindowWidth, kWindowHeight);
    parent.show();
    display = std::make_unique<QTDDisplay>(&parent, opengl);
    ready = display->Initialize(&frame) == 0;
    if (!ready) return;
    ready = display->DisplayVideo(&frame) == 0;
    display->SetParameterBool("system.silent", 0);
    for (int round = 0; round < 100; ++round) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
  }

  bool IsReady() const { return ready; }

  // What a stage of the chain does with the result of the one before it, to the end of the card's work.
  void Run(int index) {
    ZynImgProcessingChain& chain = *display->GetProcessor();
    ZynImgProcessor* const stage = chain.FindProcessor(kStages[index]);
    const ZynImage* const source = index > 0 ? chain.FindProcessor(kStages[index - 1])->Out() : &frame;
    const SurfacePass pass(Window().Surface());
    stage->ProcessImage(source, nullptr, nullptr);
    Finish();
  }
  void Draw() { Window().render(); }

 private:
  QTDWindow& Window() { return *display->Viewer()->Window(); }
  static void Finish() {
    if (QOpenGLContext* const context = QOpenGLContext::currentContext()) context->functions()->glFinish();
  }

  std::vector<uint8_t> bytes;
  ZynImage frame{};
  QWidget parent;
  std::unique_ptr<QTDDisplay> display;
  bool ready = false;
};

bool HasOpenGL() {
  static int argc = 1;
  static char name[] = "zynbench";
  static char* argv[] = {name, nullptr};
  static std::unique_ptr<QApplication> application;
  if (!QCoreApplication::instance() && qgetenv("QT_QPA_PLATFORM") == "xcb")
    application = std::make_unique<QApplication>(argc, argv);
  return QGuiApplication::platformName() == QLatin1String("xcb");
}

// The last number is the drawing.
void OpenGL(benchmark::State& state) {
  const auto index = static_cast<int>(state.range(0));
  const bool drawing = index == static_cast<int>(std::size(kStages));
  state.SetLabel(drawing ? "drawing" : kStages[index]);
  if (!HasOpenGL()) {
    state.SkipWithError("asks for QT_QPA_PLATFORM=xcb");
    return;
  }
  Shown card(true), processor(false);
  if (!card.IsReady() || !processor.IsReady()) {
    state.SkipWithError("no OpenGL");
    return;
  }
  const auto run = [&](Shown& shown) { drawing ? shown.Draw() : shown.Run(index); };
  bench::Compare(
      state, 0, [&] { run(card); }, [&] { run(processor); });
}
BENCHMARK(OpenGL)
    ->DenseRange(0, std::size(kStages))
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);

}  // namespace
