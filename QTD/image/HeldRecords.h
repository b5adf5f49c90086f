// Records that somebody shows, kept for as long as that lasts.
#pragma once

#include <utility>

#include "ZynImage.h"

namespace QTD {

// A picture on the screen belongs to a stage, which a host may prepare anew or release at any time. As long
// as a record is held, `ImageDelete` frees its attachments alone: record and pixels stay as they are until
// the last holder lets go. Records that are freed by other means must outlive their holders. Null is ignored.
// Any thread.
void HoldRecord(const ZynImage* record);
void LetRecordGo(const ZynImage* record);

// For `ImageDelete`: true when the record is held, and belongs to its holders from now on.
bool LeaveToHolders(ZynImage* record);

// Holds a record for its own life; null holds nothing.
class RecordHold {
 public:
  RecordHold() = default;
  explicit RecordHold(const ZynImage* heldRecord) : record(heldRecord) { HoldRecord(record); }
  ~RecordHold() { LetRecordGo(record); }
  RecordHold(const RecordHold&) = delete;
  RecordHold& operator=(const RecordHold&) = delete;

  void Swap(RecordHold& other) { std::swap(record, other.record); }

 private:
  const ZynImage* record = nullptr;
};

}  // namespace QTD
