#include "demosaicing/Bayer.h"

#include <iterator>
#include <new>
#include <stdexcept>

namespace Demosaicing {
namespace {

// As the stages of the display library say it; the code has no other meaning here.
constexpr uint32_t kNoMemory = 9;

using Guard = std::lock_guard<std::recursive_mutex>;

constexpr char kMethodName[] = "BayerAlgType";

using MakeMethod = std::unique_ptr<Method> (*)(size_t width, size_t height, uint32_t depth);

// The values of "BayerAlgType".
constexpr MakeMethod kMethods[] = {
    MakeGradientCorrected,
    MakeBilinear,
    MakeEdgeDirected,
    MakeBest,
};

// Null for a value that names no method.
MakeMethod ChosenMethod(Parameters& parameters) {
  int64_t value = 0;
  try {
    if (parameters.GetParameterInt(kMethodName, &value) != 0) return nullptr;
  } catch (const std::logic_error&) {
    return nullptr;  // not a number
  }
  if (value < 0 || value >= static_cast<int64_t>(std::size(kMethods))) return nullptr;
  return kMethods[value];
}

// The bytes from the first to behind the last one that belongs to a pixel.
uint64_t Extent(const ZynImage& image, uint64_t lineBytes) {
  return (uint64_t{image.height} - 1) * image.linePitch + lineBytes;
}

bool LinesLieWithin(const ZynImage& image, uint64_t lineBytes) {
  return image.imageData && image.linePitch >= lineBytes && Extent(image, lineBytes) <= image.imageSize;
}

bool ShareMemory(const ZynImage& a, uint64_t aLine, const ZynImage& b, uint64_t bLine) {
  const auto aStart = reinterpret_cast<uintptr_t>(a.imageData),
             bStart = reinterpret_cast<uintptr_t>(b.imageData);
  return aStart < bStart + Extent(b, bLine) && bStart < aStart + Extent(a, aLine);
}

}  // namespace

Bayer::Bayer() {
  parameters.SetParameter("class", "ZynBayer");
  parameters.SetParameterInt(kMethodName, 0);
}

Bayer::~Bayer() {
  const Guard guard(lock);
}

ZynComponent* Bayer::GetComponent() {
  return &parameters;
}

uint32_t Bayer::Init(const ZynImage* source, ZynImage* output) {
  const Guard guard(lock);
  Release();
  if (!source || !output) return Failure(ZYN_ERR_BAD_ARGUMENT);
  try {
    // Copies: another thread of the host may write into its records.
    const ZynImage from = *source, to = *output;
    const uint32_t code = Prepare(from, to);
    if (code != 0) Release();
    return code == 0 ? 0 : Failure(code);
  } catch (const std::bad_alloc&) {
    Release();
    return Failure(kNoMemory);
  }
}

uint32_t Bayer::Prepare(const ZynImage& source, const ZynImage& output) {
  if (source.width == 0 || source.height == 0) return ZYN_ERR_BAD_ARGUMENT;
  if (source.width != output.width || source.height != output.height) return ZYN_ERR_BAD_ARGUMENT;
  bayer = FindBayerFormat(source.pixelType);
  color = FindColorFormat(output.pixelType);
  if (!bayer || !color || bayer->depth != color->depth) return ZYN_ERR_NOT_IMPLEMENTED;
  const MakeMethod make = ChosenMethod(parameters);
  if (!make) return ZYN_ERR_BAD_ARGUMENT;
  width = source.width;
  height = source.height;
  method = make(width, height, bayer->depth);
  if (!method) return ZYN_ERR_BAD_ARGUMENT;
  return 0;
}

uint32_t Bayer::ProcessImage(const ZynImage* source, ZynImage* output) {
  const Guard guard(lock);
  if (!method) return Failure(ZYN_ERR_NOT_READY);
  if (!source || !output) return Failure(ZYN_ERR_BAD_ARGUMENT);
  // What is checked here is what is used below: another thread of the host may write into its records.
  const ZynImage from = *source, to = *output;
  const auto isAsPrepared = [&](const ZynImage& image, uint32_t pixelType) {
    return image.pixelType == pixelType && image.width == width && image.height == height;
  };
  if (!isAsPrepared(from, bayer->pixelType) || !isAsPrepared(to, color->pixelType)) {
    return Failure(ZYN_ERR_BAD_ARGUMENT);
  }
  const uint64_t fromLine = uint64_t{width} * (bayer->depth > 8 ? 2 : 1), toLine = 3 * fromLine;
  if (!LinesLieWithin(from, fromLine) || !LinesLieWithin(to, toLine)) return Failure(ZYN_ERR_BAD_ARGUMENT);
  if (ShareMemory(from, fromLine, to, toLine)) return Failure(ZYN_ERR_BAD_ARGUMENT);

  method->Run({from.imageData, from.linePitch, width, height, bayer->depth, bayer->redX, bayer->redY},
              {to.imageData, to.linePitch, color->blueFirst});
  return 0;
}

void Bayer::Release() {
  const Guard guard(lock);
  method.reset();
}

}  // namespace Demosaicing

ZynBayer* ZynBayer::CreateComponent() {
  try {
    return new Demosaicing::Bayer();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void ZynBayer::DeleteComponent(ZynBayer* component) {
  delete static_cast<Demosaicing::Bayer*>(component);
}
