// Your own stage in the chain: a negative of 8-bit images, in the window and in conversions alike.
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <cstdio>
#include <vector>

// The chain calls its stages on the GUI thread, one image at a time.
class Negative : public ZynImgProcessor {
 public:
  uint32_t Init(const ZynImage* source, const ZynImage*) override {
    Release();
    if (!source || source->bitDepth != 8) return 0x80FF0003;  // not a format of this stage
    prepared = *source;
    prepared.imageData = prepared.ownedData = nullptr;  // size and format stay, the pixels do not
    prepared.attachments = nullptr;
    result = prepared;
    pixels.resize(source->imageSize);
    return 0;
  }
  uint32_t ProcessImage(const ZynImage* source, ZynImage*, void*) override {
    result.imageData = nullptr;
    if (!source || !source->imageData || source->imageSize != pixels.size()) return 0x80FF0007;
    for (std::size_t i = 0; i < pixels.size(); ++i)
      pixels[i] = static_cast<uint8_t>(255 - source->imageData[i]);
    result.imageID = source->imageID;
    result.linePitch = source->linePitch;
    result.imageData = pixels.data();
    return 0;
  }
  void Release() override {
    pixels.clear();
    prepared = result = ZynImage{};
  }
  ZynComponent* GetComponent() override { return nullptr; }  // no parameters
  ZynImage* Out() override { return result.imageData ? &result : nullptr; }
  ZynImage* GetImageInfo(bool source) override {
    return pixels.empty() ? nullptr : source ? &prepared : &result;
  }
  bool Enable(bool) override { return true; }  // a stage without a switch
  bool IsEnabled() override { return true; }

 private:
  ZynImage prepared{}, result{};
  std::vector<uint8_t> pixels;
};

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.show();
  std::vector<uint8_t> grey(320 * 240, 55), converted(320 * 240);
  ZynImage frame{};
  frame.pixelType = ZYN_PIXEL_MONO8;
  frame.width = frame.linePitch = 320;
  frame.height = 240;
  frame.imageSize = 320 * 240;
  frame.imageData = grey.data();
  ZynImage output = frame;
  output.imageData = converted.data();

  ZynDisplayProcessor* display = ZynDisplayCPU::CreateComponent(&window);
  if (display->Initialize(&frame) != 0) return 1;  // makes the chain, and each time makes it anew
  ZynImgProcessingChain* chain = display->GetProcessor();
  auto* stage = new Negative;
  if (stage->Init(chain->FindProcessor("image.output")->GetImageInfo(true), nullptr) != 0) return 1;
  if (chain->InsertProcessor("image.output", "negative", stage) != 0) return 1;  // now it is the chain's
  display->DisplayVideo(&frame);
  if (display->ConvertImage(&frame, &output) == 0) std::printf("%d became %d\n", grey[0], converted[0]);
  if (argc > 1)
    QTimer::singleShot(QString::fromLocal8Bit(argv[1]).toInt(), &application, &QApplication::quit);
  const int result = QApplication::exec();
  ZynDisplayCPU::DeleteComponent(display);
  return result;
}
