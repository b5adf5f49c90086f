// A copy of a stage's result, out of reach of the stages behind it.
#pragma once

#include "ZynImage.h"
#include "cpu/stages/SourceCopy.h"

// Stages that do not change the format work in place, and so on the result of an image stage before them.
// Who asks later for the values as they came out of that stage reads this copy. Its buffer is made once for a
// format, and only while the copy is wanted. One thread at a time.
class UntouchedCopy {
 public:
  UntouchedCopy() = default;
  UntouchedCopy(const UntouchedCopy&) = delete;
  UntouchedCopy& operator=(const UntouchedCopy&) = delete;
  ~UntouchedCopy();

  void SetWanted(bool on);  // false frees the buffer
  // Copies a result; null tells that there is none, and no copy either. False when a wanted copy cannot be
  // made.
  bool Take(const ZynImage* result);
  const ZynImage* Image() const { return taken ? image : nullptr; }

 private:
  bool Copy(const ZynImage& result);

  bool wanted = false;
  bool taken = false;
  ZynImage* image = nullptr;
  SourceCopy aside;
};
