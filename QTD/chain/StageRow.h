// One row of a chain's composition, and the loop that builds stages from rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ZynImgProcessor.h"

class QTDProcessor;
class ZynDisplayProcessor;

enum StageParent { kNoParent, kChainIsParent };
enum StageOutput { kNoOutput, kGetsOutput };

struct StageRow {
  const char* name;                                  // in the chain
  bool (*applies)(uint32_t pixelType);               // asked with the format that has been reached
  ZynImgProcessor* (*create)(ZynComponent* parent);  // the class; of two kinds, the one to fall back on
  StageParent parent;                                // which component the stage is made under
  StageOutput output;                                // whether `Init` gets the caller's output
  void (*configure)(QTDProcessor& chain, ZynImgProcessor& stage) = nullptr;  // before `Init`
  void (*finish)(ZynImgProcessor& stage) = nullptr;                          // once it is in the chain
  ZynImgProcessor* (*createOnCard)(ZynDisplayProcessor* display) = nullptr;  // tried first
};

template <typename Stage>
ZynImgProcessor* MakeStage(ZynComponent* parent) {
  return new Stage(parent);
}

template <typename Stage>
ZynImgProcessor* MakeOnCard(ZynDisplayProcessor* display) {
  return new Stage(display);
}

inline bool AnyFormat(uint32_t) {
  return true;
}

// Appends the stages of all rows that apply, each for the format that the ones before it have led to. Ends
// with false at the first stage that cannot be prepared; the stages before it stay. The chain's lock is held.
bool AppendStages(QTDProcessor& chain, const StageRow* rows, size_t count, const ZynImage* source,
                  const ZynImage* output);
