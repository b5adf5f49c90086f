// The unpacking stage against records that lie.
#include "cpu/stages/CPUIPUnpack.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  CPUIPUnpack stage(nullptr);
  if (input.ConsumeBool()) stage.SetParameterBool("image.flip.vert", 1);
  fuzz::RunStage(stage, input);
  return 0;
}
