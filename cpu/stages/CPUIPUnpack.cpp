#include "cpu/stages/CPUIPUnpack.h"

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

}  // namespace

ZynImgProcessor* ZynDisplayCPU::Unpack::CreateComponent(ZynComponent* parent) {
  return new CPUIPUnpack(parent);
}

void ZynDisplayCPU::Unpack::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPUnpack::CPUIPUnpack(ZynComponent* parentComponent)
    : OwnImageStage(parentComponent, "unpack.cpu", "CPUIPUnpack") {}

bool CPUIPUnpack::Takes(uint32_t pixelType) const {
  return QTD::IsPackedFormat(pixelType);
}
uint32_t CPUIPUnpack::ResultType(uint32_t pixelType) const {
  return QTD::UnpackedFormat(pixelType);
}
bool CPUIPUnpack::Fill(const ZynImage& source, const ZynImage& output) const {
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
