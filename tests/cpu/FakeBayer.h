// A demosaicing component that does as a test plans, and the stage that drives it.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "QTD/frame/ComponentImpl.h"
#include "ZynDemosaicing.h"
#include "cpu/stages/CPUIPBayer.h"

class FakeBayer final : public ZynBayer {
 public:
  // What the components do, and what was seen of them. Each test starts with a fresh one.
  struct Plan {
    bool exists = true, hasParameters = true, throwsAtInit = false, throwsAtProcess = false,
         throwsAtRelease = false;
    uint32_t initCode = 0, processCode = 0;

    std::vector<std::string> calls;
    std::string method;  // "BayerAlgType" when `Init` ran
    ZynImage initSource{}, initOutput{};
  };
  static Plan& ThePlan() {
    static Plan plan;
    return plan;
  }

  static ZynBayer* Create() {
    ThePlan().calls.emplace_back("create");
    return ThePlan().exists ? new FakeBayer : nullptr;
  }
  static void Destroy(ZynBayer* component) {
    ThePlan().calls.emplace_back("delete");
    delete static_cast<FakeBayer*>(component);
  }

  ZynComponent* GetComponent() override { return ThePlan().hasParameters ? &parameters : nullptr; }

  uint32_t Init(const ZynImage* source, ZynImage* output) override {
    ThePlan().calls.emplace_back("init");
    ThePlan().method = parameters.Parameters().GetString("BayerAlgType", "absent");
    ThePlan().initSource = *source;
    ThePlan().initOutput = *output;
    if (ThePlan().throwsAtInit) throw std::runtime_error("init");
    return ThePlan().initCode;
  }

  // Fills the buffer with the low byte of the image's number.
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output) override {
    ThePlan().calls.emplace_back("process");
    if (ThePlan().throwsAtProcess) throw std::runtime_error("process");
    if ((ThePlan().processCode & 0xFFFF) == 0)
      std::memset(output->imageData, static_cast<int>(source->imageID & 0xFF), output->imageSize);
    return ThePlan().processCode;
  }

  void Release() override {
    ThePlan().calls.emplace_back("release");
    if (ThePlan().throwsAtRelease) throw std::runtime_error("release");
  }

 private:
  QTD::ComponentImpl parameters;
};

class FakeBayerStage : public CPUIPBayer {
 public:
  FakeBayerStage() : CPUIPBayer(nullptr, {FakeBayer::Create, FakeBayer::Destroy}) {
    FakeBayer::ThePlan() = FakeBayer::Plan();
  }
  const std::string& Name() const { return name; }
  uint32_t LastError() const { return lastError; }
};
