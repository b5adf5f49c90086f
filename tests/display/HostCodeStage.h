// A stage of a host's that runs some code of the host's and leaves the image as it is.
#pragma once

#include <functional>
#include <utility>

#include "ZynDisplay.h"

namespace display_test {

class HostCodeStage : public ZynImgProcessor {
 public:
  explicit HostCodeStage(std::function<uint32_t()> hostCode) : code(std::move(hostCode)) {}

  uint32_t Init(const ZynImage*, const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return code(); }
  void Release() override {}
  ZynComponent* GetComponent() override { return nullptr; }
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool) override { return nullptr; }
  bool Enable(bool) override { return true; }
  bool IsEnabled() override { return true; }

 private:
  std::function<uint32_t()> code;
};

}  // namespace display_test
