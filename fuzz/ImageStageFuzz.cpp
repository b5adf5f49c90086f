// The image stage against records that lie.
#include "cpu/stages/CPUIPImage.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  CPUIPImage stage(nullptr);
  if (input.ConsumeBool()) stage.SetParameterInt("depth", 8);
  if (input.ConsumeBool()) stage.SetParameterBool("external", 1);
  if (input.ConsumeBool()) stage.SetParameterBool("image.flip.vert", 1);
  if (input.ConsumeBool()) stage.Enable(false);
  fuzz::RunStage(stage, input);
  return 0;
}
