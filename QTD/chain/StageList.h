// The ordered list of a chain's stages.
#pragma once

#include <cstdint>
#include <vector>

#include "QTD/frame/Properties.h"
#include "ZynImgProcessor.h"

// An entry is a pair of texts: the stage's name in the chain, and its pointer. A second entry of a name may
// be appended; lookups find the first one. The list does not own the stages and has no lock: it belongs to a
// chain and is guarded by the chain's lock.
class StageList {
 public:
  int Count() const { return static_cast<int>(entries.size()); }
  ZynImgProcessor* At(int index) const;  // null out of range
  const char* NameAt(int index) const;   // "" out of range
  ZynImgProcessor* Find(const char* name) const;
  int PositionOf(const ZynImgProcessor* stage) const;  // -1 when it is not in the list

  // Puts the stage in front of the entry `before`, or at the end when that is null or empty: 0, or 7, 4, 2.
  uint32_t Insert(const char* before, const char* name, ZynImgProcessor* stage);

  // Takes the first entry of that name out and answers its stage; null when there is none.
  ZynImgProcessor* Remove(const char* name);
  std::vector<ZynImgProcessor*> TakeAll();

  // Grows whenever an entry leaves. Whoever walks the list and calls stages, which may call the chain,
  // compares it to tell that the stage at hand may be gone; entries that came may have moved that stage.
  uint32_t Removals() const { return removals; }

 private:
  int IndexOf(const char* name) const;  // -1 when there is none

  std::vector<QTD::Property> entries;
  uint32_t removals = 0;
};
