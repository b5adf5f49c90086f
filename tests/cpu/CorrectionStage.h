// The colour correction stage, open to tests.
#pragma once

#include <string>

#include "cpu/stages/CPUIPColorCorrection.h"
#include "tests/cpu/ReadyStage.h"

class CorrectionStage : public CPUIPColorCorrection {
 public:
  CorrectionStage() : CPUIPColorCorrection(nullptr) {}
  const std::string& Name() const { return name; }
  uint32_t LastError() const { return lastError; }
  std::string Text(const char* key) { return parameters.GetString(key, "absent"); }
};
