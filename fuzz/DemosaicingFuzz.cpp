// The interpolation component, each of its methods, against records that lie.
#include "ZynDemosaicing.h"
#include "fuzz/FuzzInput.h"

namespace {

struct Delete {
  void operator()(ZynBayer* component) const { ZynBayer::DeleteComponent(component); }
};

// Mostly a Bayer format and the result that belongs to it.
ZynImage BayerHeader(FuzzedDataProvider& input) {
  ZynImage header = fuzz::TrueHeader(input);
  static constexpr uint32_t kFirstRow = 13, kLastRow = 48;
  if (!QTD::IsBayerFormat(header.pixelType)) {
    const QTD::PixelRow* const row =
        QTD::FindPixelRow(input.ConsumeIntegralInRange<uint32_t>(kFirstRow, kLastRow));
    QTD::ImageCreateHeader(&header, header.width, static_cast<int32_t>(header.height), row->code);
  }
  return header;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const std::unique_ptr<ZynBayer, Delete> component(ZynBayer::CreateComponent());
  while (input.remaining_bytes() > 8) {
    component->GetComponent()->SetParameterInt("BayerAlgType", input.ConsumeIntegralInRange<int>(-1, 4));
    const ZynImage source = BayerHeader(input);
    ZynImage result{};
    QTD::ImageCreateHeader(&result, source.width, static_cast<int32_t>(source.height),
                           QTD::DemosaicedFormat(source.pixelType, input.ConsumeBool()));
    component->Init(&source, &result);
    for (int image = 0; image < 2; ++image) {
      fuzz::Image given(input, source), target(input, result);
      component->ProcessImage(&given.record, &target.record);
    }
    if (input.ConsumeBool()) component->Release();
  }
  return 0;
}
