#include "QTD/chain/StageRun.h"

#include "QTD/frame/ComponentImpl.h"
#include "QTD/image/StageAnswers.h"

StageRun::StageRun(const StageList& walkedStages, const ZynImage* source)
    : stages(walkedStages), removals(walkedStages.Removals()), picture(source) {}

bool StageRun::Next() {
  do {
    stage = stages.At(++index);
  } while (!stage && index < stages.Count());
  return stage != nullptr;
}

bool StageRun::Process(const ZynImage* image, ZynImage* output, void* data) {
  if (QTD::BareCode(stage->ProcessImage(image, output, data)) != 0) return false;
  if (!IsIntact()) return false;
  QTD::RecordHold made;
  if (const ZynImage* const result = QTD::HeldOutOf(*stage, made)) {
    if (result != picture) former.Swap(hold);
    hold.Swap(made);
    picture = result;
  }
  if (!IsIntact()) return false;
  // A stage that put others in front of itself has moved, and is not run again.
  if (stages.At(index) != stage) index = stages.PositionOf(stage);
  return true;
}
