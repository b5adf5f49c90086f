// A display whose chain has stages that only remember what a host does with them.
#pragma once

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ZynDisplay.h"
#include "ZynPixelFormat.h"
#include "apps/zynview/sources/FrameSource.h"

// The parameters as text, integers alone.
struct FakeComponent : ZynComponent {
  std::map<std::string, std::string> values;

  uint8_t GetComponentID() override { return 0xFF; }
  uint32_t GetParameterCount() override { return static_cast<uint32_t>(values.size()); }
  uint32_t GetParameterName(uint32_t, char*, uint32_t*) override { return ZYN_ERR_NOT_FOUND; }
  uint32_t GetParameter(const char*, char*, uint32_t*) override { return ZYN_ERR_NOT_FOUND; }
  uint32_t SetParameter(const char* name, const char* value) override { return values[name] = value, 0; }
  uint32_t SetParameterBool(const char*, uint8_t) override { return ZYN_ERR_NOT_SUPPORTED; }
  uint32_t SetParameterInt(const char* name, int64_t value) override {
    return values[name] = std::to_string(value), 0;
  }
  uint32_t SetParameterDouble(const char*, double) override { return ZYN_ERR_NOT_SUPPORTED; }
  uint32_t SetParameterString(const char* name, const char* value) override {
    return SetParameter(name, value);
  }
  uint32_t SetParameterExtra(const char*, const void*) override { return ZYN_ERR_NOT_SUPPORTED; }
  uint32_t GetParameterBool(const char*, uint8_t*) override { return ZYN_ERR_NOT_FOUND; }
  uint32_t GetParameterInt(const char* name, int64_t* result) override {
    const auto found = values.find(name);
    if (found == values.end()) return ZYN_ERR_NOT_FOUND;
    return *result = std::stoll(found->second), 0;
  }
  uint32_t GetParameterDouble(const char*, double*) override { return ZYN_ERR_NOT_FOUND; }
  uint32_t GetParameterString(const char*, char*, uint32_t*) override { return ZYN_ERR_NOT_FOUND; }
  uint32_t GetParameterExtra(const char*, void*) override { return ZYN_ERR_NOT_SUPPORTED; }
  uint32_t ExecuteCommand(const char*) override { return ZYN_ERR_NOT_SUPPORTED; }
};

// A stage of the kind `Base`, which hands its format on.
template <typename Base>
struct FakeStage : Base {
  FakeComponent parameters;
  ZynImage format{};
  int enabled = 1;

  uint32_t Init(const ZynImage*, const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynComponent* GetComponent() override { return &parameters; }
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool) override { return &format; }
  bool Enable(bool on) override {
    enabled = on ? enabled + 1 : enabled > 0 ? enabled - 1 : 0;
    return enabled > 0;
  }
  bool IsEnabled() override { return enabled > 0; }
};

struct FakeBayerStage : FakeStage<ZynDisplayQT::Bayer> {
  ZynImage preparedFor{};
  bool tookItsOwnRecord = false;
  int inits = 0;
  std::string refusedMethod;

  uint32_t Init(const ZynImage* source, const ZynImage*) override {
    ++inits;
    tookItsOwnRecord = source == &format;
    preparedFor = *source;
    return parameters.values["BayerAlgType"] == refusedMethod ? 0x80FF0009u : 0u;
  }
};

struct FakeCorrection : FakeStage<ZynDisplayQT::ColorCorrection> {
  std::vector<QTD::ARGUMENTS> commands;

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    if (std::strcmp(name, "cmd.params.apply") != 0 || !args) return 0;
    commands.push_back(*args);
    return 1;
  }
};

struct FakeColoration : FakeStage<ZynDisplayQT::ExposureColoration> {
  uint32_t RunCommand(const char*, QTD::ARGUMENTS*) override { return 0; }
};

class FakeDisplay : public ZynDisplayProcessor, private ZynImgProcessingChain {
 public:
  explicit FakeDisplay(uint32_t pixelType) {
    const ZynImage source = zynview::MakeRecord(pixelType, 64, 48, 0, nullptr);
    bayer.format = source;
    hasBayer = pixelType >> 24 == 3;
    correction.format = hasBayer ? zynview::MakeRecord(ZYN_PIXEL_RGB12, 64, 48, 0, nullptr) : source;
    // Depth by the group of the code.
    constexpr uint32_t kDepths[] = {8, 8, 10, 12, 14, 16};
    correction.format.bitDepth = kDepths[(correction.format.pixelType >> 8) & 7];
    unpacked.Enable(false);
    coloration.Enable(false);
  }

  FakeComponent parameters;
  FakeBayerStage bayer;
  FakeCorrection correction;
  FakeStage<ZynDisplayQT::Image> unpacked;
  FakeColoration coloration;
  bool empty = false, hasBayer = false;
  int rebuilds = 0;

  ZynImgProcessingChain* GetProcessor() override { return empty ? nullptr : this; }
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS*) override {
    if (std::strcmp(name, "cmd.image.rebuild") == 0) ++rebuilds;
    return 1;
  }
  ZynComponent* GetComponent() override { return &parameters; }
  uint32_t Initialize(const ZynImage*) override { return 0; }
  uint32_t DisplayVideo(const ZynImage*) override { return 0; }
  void Uninitialize() override {}

 private:
  ZynImgProcessor* FindProcessor(const char* name) override {
    const std::string wanted(name);
    if (wanted == "bayer") return hasBayer ? &bayer : nullptr;
    if (wanted == "image.unpacked") return &unpacked;
    if (wanted == "image.colorcorrection") return &correction;
    return wanted == "image.coloration" ? &coloration : nullptr;
  }
  ZynImgProcessor* GetProcessorAt(int) override { return nullptr; }
  uint32_t AddProcessor(const char*, ZynImgProcessor*) override { return 0; }
  uint32_t InsertProcessor(const char*, const char*, ZynImgProcessor*) override { return 0; }
  uint32_t RemoveProcessor(const char*) override { return 0; }
  uint32_t Init(const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool) override { return nullptr; }
};
