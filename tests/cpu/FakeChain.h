// A chain and a stage as a host might write them, for stages that look their neighbours up.
#pragma once

#include <map>
#include <string>

#include "QTD/frame/ComponentImpl.h"
#include "ZynImgProcessor.h"

struct FakeStage : ZynImgProcessor {
  uint32_t Init(const ZynImage*, const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynComponent* GetComponent() override { return nullptr; }
  ZynImage* Out() override { return out; }
  ZynImage* GetImageInfo(bool source) override { return source ? sourceInfo : outputInfo; }
  bool Enable(bool on) override {
    count += on ? 1 : -1;
    return count > 0;
  }
  bool IsEnabled() override { return count > 0; }

  ZynImage* out = nullptr;
  ZynImage* sourceInfo = nullptr;
  ZynImage* outputInfo = nullptr;
  int count = 0;
};

// Owns none of its stages.
struct FakeChain : ZynImgProcessingChain, QTD::ComponentImpl {
  ZynImgProcessor* GetProcessorAt(int) override { return nullptr; }
  ZynImgProcessor* FindProcessor(const char* name) override {
    if (throwing) throw 1;
    const auto found = stages.find(name);
    return found == stages.end() ? nullptr : found->second;
  }
  uint32_t AddProcessor(const char* name, ZynImgProcessor* stage) override {
    stages[name] = stage;
    return 0;
  }
  uint32_t InsertProcessor(const char*, const char*, ZynImgProcessor*) override { return 7; }
  uint32_t RemoveProcessor(const char* name) override { return stages.erase(name) ? 0 : 2; }
  ZynComponent* GetComponent() override { return this; }
  uint32_t Init(const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool) override { return nullptr; }

  std::map<std::string, ZynImgProcessor*> stages;
  bool throwing = false;
};
