// Stand-ins for what a chain meets: stages as a host would write them, the owning display, its surface.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/screen/QTDSurface.h"
#include "ZynDisplay.h"

namespace chain_test {

// What happened, in order: "a.run", "a.release", "a.delete", "begin", "end", ...
using Journal = std::vector<std::string>;

class FakeStage : public ZynImgProcessor, public QTD::ComponentImpl {
 public:
  FakeStage(std::string stageLabel, Journal* writtenTo) : label(std::move(stageLabel)), journal(writtenTo) {}
  ~FakeStage() override { Note("delete"); }

  uint32_t Init(const ZynImage* source, const ZynImage* output) override {
    Note("init");
    initSource = source ? *source : ZynImage{};
    initOutput = output;
    return initCode;
  }
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override {
    Note("run");
    seenSource = source;
    seenOutput = output;
    seenData = data;
    if (onRun) onRun();
    return runCode;
  }
  void Release() override { Note("release"); }
  ZynComponent* GetComponent() override { return this; }
  ZynImage* Out() override { return out; }
  ZynImage* GetImageInfo(bool source) override { return source ? sourceInfo : outputInfo; }
  bool Enable(bool on) override { return enabled = on; }
  bool IsEnabled() override { return enabled; }
  uint32_t ExecuteCommand(const char* name) override {
    Note(name);
    return commandCode;
  }

  uint32_t initCode = 0, runCode = 0, commandCode = 0;
  std::function<void()> onRun;
  ZynImage* out = nullptr;
  ZynImage* sourceInfo = nullptr;
  ZynImage* outputInfo = nullptr;
  bool enabled = true;

  ZynImage initSource{};
  const ZynImage* initOutput = nullptr;
  const ZynImage* seenSource = nullptr;
  ZynImage* seenOutput = nullptr;
  void* seenData = nullptr;

 private:
  void Note(const std::string& what) {
    if (journal) journal->push_back(label + "." + what);
  }

  std::string label;
  Journal* journal;
};

// The controller, as far as chains and stages ask it.
class FakeDisplay : public ZynDisplayProcessor, public QTD::ComponentImpl {
 public:
  FakeDisplay() {
    parameters.Set("class", "QTDDisplay");
    QTD::LivePointers<ZynDisplayProcessor>::Instance().Add(this);
  }
  ~FakeDisplay() override { QTD::LivePointers<ZynDisplayProcessor>::Instance().Remove(this); }
  ZynComponent* GetComponent() override { return component ? component : this; }
  uint32_t Initialize(const ZynImage*) override { return 0; }
  uint32_t DisplayVideo(const ZynImage*) override { return 0; }
  void Uninitialize() override {}
  ZynImgProcessingChain* GetProcessor() override { return nullptr; }

  void Publish(const char* name, const void* pointer) { parameters.Set(name, QTD::ToText(pointer)); }
  void Publish(QTDSurface* surface) { Publish("surface", surface); }

  ZynComponent* component = nullptr;  // instead of its own
};

class FakeSurface : public QTDSurface {
 public:
  explicit FakeSurface(Journal* writtenTo) : journal(writtenTo) {}
  bool begin(QTD::PROPERTIES*) override {
    journal->push_back("begin");
    if (throwing) throw 1;
    return true;
  }
  void end(QTD::PROPERTIES*, bool) override {
    journal->push_back("end");
    if (throwing) throw 1;
  }
  bool throwing = false;

 private:
  Journal* journal;
};

// A picture with a buffer of its own.
class Picture {
 public:
  Picture(uint32_t width, int32_t height, uint32_t pixelType)
      : image(QTD::ImageCreate(nullptr, width, height, pixelType)) {}
  ~Picture() { QTD::ImageDelete(image); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  operator ZynImage*() const { return image; }
  ZynImage* operator->() const { return image; }
  ZynImage& operator*() const { return *image; }

  uint8_t& Byte(uint32_t x, uint32_t y) const { return image->imageData[y * image->linePitch + x]; }
  uint16_t Word(uint32_t x, uint32_t y) const {
    return static_cast<uint16_t>(Byte(2 * x, y) | Byte(2 * x + 1, y) << 8);
  }
  void SetWord(uint32_t x, uint32_t y, uint32_t value) const {
    Byte(2 * x, y) = static_cast<uint8_t>(value & 0xFF);
    Byte(2 * x + 1, y) = static_cast<uint8_t>(value >> 8);
  }

 private:
  ZynImage* image;
};

inline uint8_t ByteOf(const ZynImage* image, uint32_t x, uint32_t y) {
  return image->imageData[y * image->linePitch + x];
}

}  // namespace chain_test
