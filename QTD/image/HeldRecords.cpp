#include "QTD/image/HeldRecords.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <vector>

#include "QTD/image/ImageRecord.h"

namespace QTD {
namespace {

struct Held {
  const ZynImage* record;
  uint32_t holders;
  ZynImage* left;  // the record, once its owner has deleted it
};

// A few at any time, of which the same ones come again with every picture: nothing is allocated then.
class Register {
 public:
  // Never destroyed: windows may live until the very end of the process.
  static Register& Instance() {
    static Register& instance = *new Register;
    return instance;
  }

  void Hold(const ZynImage* record) {
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = Find(record);
    if (found != entries.end()) {
      ++found->holders;
    } else {
      entries.push_back({record, 1, nullptr});
    }
  }

  // The record, when it has to be freed now.
  ZynImage* LetGo(const ZynImage* record) {
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = Find(record);
    if (found == entries.end() || --found->holders > 0) return nullptr;
    ZynImage* const left = found->left;
    entries.erase(found);
    return left;
  }

  bool Leave(ZynImage* record) {
    const std::lock_guard<std::mutex> guard(lock);
    const auto found = Find(record);
    if (found == entries.end()) return false;
    found->left = record;
    return true;
  }

 private:
  std::vector<Held>::iterator Find(const ZynImage* record) {
    return std::find_if(entries.begin(), entries.end(),
                        [record](const Held& entry) { return entry.record == record; });
  }

  std::mutex lock;  // guards `entries`
  std::vector<Held> entries;
};

}  // namespace

void HoldRecord(const ZynImage* record) {
  if (record) Register::Instance().Hold(record);
}

void LetRecordGo(const ZynImage* record) {
  if (!record) return;
  ZynImage* left = Register::Instance().LetGo(record);
  ImageDelete(left);
}

bool LeaveToHolders(ZynImage* record) {
  return Register::Instance().Leave(record);
}

}  // namespace QTD
