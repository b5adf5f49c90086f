#pragma once

#include <string>
#include <vector>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/image/ImageRecord.h"
#include "ZynImgProcessor.h"

namespace windowtest {

// A chain that records what is added to it.
class RecordingChain : public ZynImgProcessingChain {
 public:
  ~RecordingChain() override {
    for (ZynImgProcessor* stage : stages) delete stage;
    QTD::ImageDelete(last);
  }
  ZynImgProcessor* GetProcessorAt(int) override { return nullptr; }
  ZynImgProcessor* FindProcessor(const char*) override { return nullptr; }
  uint32_t AddProcessor(const char* name, ZynImgProcessor* stage) override {
    names.emplace_back(name);
    if (name == refused) return 4;
    stages.push_back(stage);
    return 0;
  }
  uint32_t InsertProcessor(const char*, const char*, ZynImgProcessor*) override { return 7; }
  uint32_t RemoveProcessor(const char*) override { return 2; }
  ZynComponent* GetComponent() override { return &component; }
  uint32_t Init(const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool source) override { return source ? nullptr : last; }

  QTD::ComponentImpl component;
  std::vector<std::string> names;
  std::vector<ZynImgProcessor*> stages;
  ZynImage* last = nullptr;
  std::string refused;  // the name of the stage that it does not take
};

}  // namespace windowtest
