// A whole chain against records that lie.
#include <QGuiApplication>

#include "QTD/chain/QTDProcessor.h"
#include "fuzz/FuzzInput.h"

// Overlays need fonts, and these an application.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static QGuiApplication application(*argc, *argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  QTDProcessor chain(nullptr, false);
  while (input.remaining_bytes() > 8) {
    if (input.ConsumeBool()) chain.Parameters().Set("image.downscale", "1");
    const ZynImage format = fuzz::TrueHeader(input);
    chain.Init(&format);
    if (ZynImgProcessor* const stage = chain.FindProcessor("image.unpacked")) {
      if (input.ConsumeBool()) stage->Enable(true);
    }
    if (ZynImgProcessor* const stage = chain.FindProcessor("image.colorcorrection")) {
      if (input.ConsumeBool()) stage->GetComponent()->SetParameterDouble("gain.g", 1.5);
      if (input.ConsumeBool()) stage->GetComponent()->ExecuteCommand("params.apply");
    }
    if (ZynImgProcessor* const stage = chain.FindProcessor("image.overlay")) {
      auto& overlay = static_cast<ZynDisplayQT::ImageOverlay&>(*stage);
      if (input.ConsumeBool()) {
        overlay.AddText("Zyn", input.ConsumeIntegralInRange<int>(-20, 80),
                        input.ConsumeIntegralInRange<int>(-20, 60), nullptr);
      }
    }
    for (int image = 0; image < 2; ++image) {
      fuzz::Image given(input, format);
      chain.ProcessImage(&given.record, nullptr, nullptr);
    }
  }
  return 0;
}
