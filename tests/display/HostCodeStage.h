// A stage of a host's that runs some code of the host's and leaves the image as it is.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
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

// A stage that runs some code of the host's when it is released.
class PartingStage : public HostCodeStage {
 public:
  explicit PartingStage(std::function<void()> hostCode)
      : HostCodeStage([] { return 0u; }), parting(std::move(hostCode)) {}
  void Release() override { parting(); }

 private:
  std::function<void()> parting;
};

// Runs `step` on another thread; whether it ended in time, without events being handled here.
inline bool EndsElsewhere(std::function<void()> step,
                          std::chrono::seconds patience = std::chrono::seconds(10)) {
  auto done = std::make_shared<std::promise<void>>();
  std::future<void> end = done->get_future();
  std::thread([done, step = std::move(step)] {
    step();
    done->set_value();
  }).detach();
  return end.wait_for(patience) == std::future_status::ready;
}

}  // namespace display_test
