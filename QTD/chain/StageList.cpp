#include "QTD/chain/StageList.h"

#include <algorithm>

#include "QTD/frame/Text.h"
#include "QTD/image/ImageProcessorData.h"

namespace {

bool IsEmpty(const char* text) {
  return !text || !*text;
}

}  // namespace

ZynImgProcessor* StageList::At(int index) const {
  if (index < 0 || index >= Count()) return nullptr;
  return QTD::ParsePointerAs<ZynImgProcessor>(entries[static_cast<size_t>(index)].value);
}

const char* StageList::NameAt(int index) const {
  if (index < 0 || index >= Count()) return "";
  return entries[static_cast<size_t>(index)].name.c_str();
}

ZynImgProcessor* StageList::Find(const char* name) const {
  return At(IndexOf(name));
}

int StageList::IndexOf(const char* name) const {
  if (IsEmpty(name)) return -1;
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [name](const QTD::Property& entry) { return entry.name == name; });
  return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

int StageList::PositionOf(const ZynImgProcessor* stage) const {
  for (int index = 0; index < Count(); ++index) {
    if (At(index) == stage) return index;
  }
  return -1;
}

uint32_t StageList::Insert(const char* before, const char* name, ZynImgProcessor* stage) {
  if (IsEmpty(name) || !stage) return ZYN_ERR_BAD_ARGUMENT;
  // Under two names one stage would be deleted twice.
  if (PositionOf(stage) >= 0) return QTD::kStageExists;
  auto place = entries.end();
  if (!IsEmpty(before)) {
    // A name that exists is refused only here: at the end of the list a second entry of a name may follow.
    if (IndexOf(name) >= 0) return QTD::kStageExists;
    const int index = IndexOf(before);
    if (index < 0) return QTD::kStageNotFound;
    place = entries.begin() + index;
  }
  entries.insert(place, QTD::Property{name, QTD::ToText(static_cast<const void*>(stage))});
  return 0;
}

ZynImgProcessor* StageList::Remove(const char* name) {
  const int index = IndexOf(name);
  if (index < 0) return nullptr;
  ZynImgProcessor* const stage = At(index);
  entries.erase(entries.begin() + index);
  ++removals;
  return stage;
}

std::vector<ZynImgProcessor*> StageList::TakeAll() {
  std::vector<ZynImgProcessor*> stages;
  stages.reserve(entries.size());
  for (int index = 0; index < Count(); ++index) stages.push_back(At(index));
  if (!entries.empty()) ++removals;
  entries.clear();
  return stages;
}
