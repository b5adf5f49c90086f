#include "cpu/stages/CPUIPUnpack.h"

#include <cstring>
#include <limits>

#include "QTD/frame/Logging.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"
#include "cpu/stages/UnpackKernels.h"

using UnpackKernels::Packing;

namespace {

struct GroupRow {
  uint32_t group;  // of the pixel code
  Packing packing;
  bool narrowWords;  // whether an 8-bit pixel halves the size that the output must have
};

constexpr GroupRow kGroups[] = {
    {0x1200, Packing::kMono10g, false},
    {0x1300, Packing::kMono12g, false},
    {0x2200, Packing::kMono10p, true},
    {0x2300, Packing::kMono12p, true},
};

// Bytes that a row's kernel wants in the output.
uint64_t WantedBytes(const GroupRow& row, const ZynImage& source) {
  const uint64_t bits = row.narrowWords && source.bitsPerPixel == 8 ? 8 : 16;
  return source.height * (((bits * source.width + 31) >> 3) & ~uint64_t{3});
}

// False where the source gives no picture of the output's size.
bool UnpackPixels(const ZynImage& source, const ZynImage& output) {
  if (!source.imageData || source.width != output.width || source.height != output.height) return false;
  for (const GroupRow& row : kGroups) {
    if (row.group != QTD::PixelGroup(source.pixelType)) continue;
    if (WantedBytes(row, source) != output.imageSize) return false;
    UnpackKernels::RunJob({row.packing, source.imageData, source.imageSize,
                           static_cast<uint16_t*>(static_cast<void*>(output.imageData)),
                           output.linePitch >> 1, source.width, source.height});
    return true;
  }
  return false;
}

}  // namespace

ZynImgProcessor* ZynDisplayCPU::Unpack::CreateComponent(ZynComponent* parent) {
  return new CPUIPUnpack(parent);
}

void ZynDisplayCPU::Unpack::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPUnpack::CPUIPUnpack(ZynComponent* parentComponent)
    : CPUStage(parentComponent, "unpack.cpu", "CPUIPUnpack") {}

CPUIPUnpack::~CPUIPUnpack() {
  EndParameterCalls();
  CPUIPUnpack::Release();
}

void CPUIPUnpack::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  QTD::ImageDelete(outputImage);
}

uint32_t CPUIPUnpack::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if (!QTD::IsPackedFormat(format.pixelType)) return Finish(QTD::kStageFormat);
  const uint32_t code = Prepare(format);
  if (code != 0) Release();
  ready = code == 0;
  return Finish(code);
}

uint32_t CPUIPUnpack::Prepare(const ZynImage& source) {
  if (source.height > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(source.height);
  const int32_t markedHeight = IsFlipped(source) ? -height : height;
  const uint32_t resultType = QTD::UnpackedFormat(source.pixelType);
  outputImage = QTD::ImageCreate(nullptr, source.width, markedHeight, resultType);
  if (!outputImage) return QTD::kStageNoMemory;
  sourceInfo = QTD::ImageCloneHeader(nullptr, &source);
  outputInfo = QTD::ImageCreateHeader(nullptr, source.width, markedHeight, resultType);
  if (!sourceInfo || !outputInfo) return QTD::kStageNoMemory;
  out = outputImage;
  return 0;
}

uint32_t CPUIPUnpack::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPUnpack::ProcessImage()");
    return Finish(Run(source));
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t CPUIPUnpack::Run(const ZynImage* source) {
  if (!source || !outputImage || !QTD::IsPackedFormat(source->pixelType)) return ZYN_ERR_FAILED;
  if (!UnpackPixels(*source, *outputImage)) std::memset(outputImage->imageData, 0, outputImage->imageSize);
  outputImage->imageID = source->imageID;
  out = outputImage;
  return 0;
}
