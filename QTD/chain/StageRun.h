// The way of one image through the stages of a chain.
#pragma once

#include <cstdint>

#include "QTD/chain/StageList.h"
#include "QTD/image/HeldRecords.h"
#include "ZynImage.h"

// Calls the stages in order, each with what the ones before it produced. Lives between `BeginUse` and
// `EndUse` of the chain: a stage may take itself or others out, and a host may prepare or release stages,
// inside a stage or on another thread.
//
//   StageRun run(stages, source);
//   while (run.Next()) {
//     if (!run.Process(run.Picture(), output, data)) ...  // the image ends here
//   }
class StageRun {
 public:
  StageRun(const StageList& walkedStages, const ZynImage* source);
  StageRun(const StageRun&) = delete;
  StageRun& operator=(const StageRun&) = delete;

  bool Next();  // goes to the next stage; false behind the last one
  ZynImgProcessor& Stage() const { return *stage; }
  const char* Name() const { return stages.NameAt(index); }  // good until the list changes

  // Has the stage process `image`; false when it fails, or when the list is no longer intact.
  bool Process(const ZynImage* image, ZynImage* output, void* data);

  // What the last stage put out that put out anything; the source before. Good as long as the run, unless a
  // host that made the record frees it by other means than `ImageDelete`.
  const ZynImage* Picture() const { return picture; }
  // Whether all stages are still there. If not, it is no longer the list that the image has come through.
  bool IsIntact() const { return stages.Removals() == removals; }
  uint32_t Removals() const { return removals; }
  // Gives the hold of `Picture` away, at the run's end.
  void PassHold(QTD::RecordHold& taker) { taker.Swap(hold); }

 private:
  const StageList& stages;
  const uint32_t removals;
  int index = -1;
  ZynImgProcessor* stage = nullptr;
  const ZynImage* picture;
  QTD::RecordHold hold;  // of `picture`
  // Of the picture before it, since a record may point at another one's pixels. One step back: the owner of
  // pixels that two stages in a row hand on in records of their own has to leave them be for as long as a
  // run.
  QTD::RecordHold former;
};
