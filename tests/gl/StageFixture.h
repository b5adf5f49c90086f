// A stage as a chain uses it: a controller that names the surface, pictures in memory, results on the card.
#pragma once

#include <string>

#include "GLFixture.h"
#include "QTD/frame/ComponentImpl.h"
#include "ZynDisplay.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"
#include "gl/models/Texels.h"
#include "gl/stages/QGLIPImage.h"

constexpr uint32_t Composed(uint32_t code) {
  return code == 0 ? 0 : 0x80FF0000u | code;
}

// A chain with the one stage that others ask for.
class FakeChain : public ZynImgProcessingChain, public QTD::ComponentImpl {
 public:
  ZynImgProcessor* GetProcessorAt(int) override { return nullptr; }
  ZynImgProcessor* FindProcessor(const char* name) override {
    return std::string(name) == "image.unpacked" ? unpacked : nullptr;
  }
  uint32_t AddProcessor(const char*, ZynImgProcessor*) override { return 1; }
  uint32_t InsertProcessor(const char*, const char*, ZynImgProcessor*) override { return 1; }
  uint32_t RemoveProcessor(const char*) override { return 1; }
  ZynComponent* GetComponent() override { return this; }
  uint32_t Init(const ZynImage*) override { return 0; }
  uint32_t ProcessImage(const ZynImage*, ZynImage*, void*) override { return 0; }
  void Release() override {}
  ZynImage* Out() override { return nullptr; }
  ZynImage* GetImageInfo(bool) override { return nullptr; }

  ZynImgProcessor* unpacked = nullptr;
};

class StageFixture : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    display.Publish(surface.get());
  }

  void TearDown() override {
    // What the driver had to say, up to here, stands in the surface's parameters.
    if (surface) {
      EXPECT_EQ(surface->properties.GetString("error"), "");
    }
    GLFixture::TearDown();
  }

  static uint32_t Init(ZynImgProcessor& stage, const Record& source, const ZynImage* output = nullptr) {
    return stage.Init(source.get(), output);
  }
  static uint32_t Run(ZynImgProcessor& stage, const ZynImage* picture) {
    return stage.ProcessImage(picture, nullptr, nullptr);
  }

  // The texels of a stage's result, line 0 of the texture first.
  static Samples Texels(ZynImgProcessor& stage) {
    const ZynImage* const out = stage.Out();
    if (!out) return {};
    const int channels = QTD::IsRgbFormat(out->pixelType) ? 3 : 1;
    return ReadTexture(AttachedTexture(out), channels, out->bitDepth == 8 ? 8 : 16);
  }

  // One texel of three channels.
  static std::vector<uint32_t> Pixel(const Samples& texels, uint32_t width, uint32_t x, uint32_t y) {
    const size_t at = (size_t{y} * width + x) * 3;
    return {texels.at(at), texels.at(at + 1), texels.at(at + 2)};
  }

  // A picture that lies on the card, as the stage before hands it over.
  struct OnCard {
    OnCard(ZynDisplayProcessor* display, const Record& source) : stage(display) {
      EXPECT_EQ(stage.Init(source.get(), nullptr), 0u);
      EXPECT_EQ(stage.ProcessImage(source.get(), nullptr, nullptr), 0u);
    }
    const ZynImage* record() { return stage.Out(); }
    QGLIPImage stage;
  };

  // Lines in the reverse order.
  static Samples Turned(const Samples& samples, uint32_t height) {
    Samples turned;
    const size_t line = samples.size() / height;
    for (uint32_t y = height; y-- > 0;) {
      const auto from = samples.begin() + static_cast<std::ptrdiff_t>(y * line);
      turned.insert(turned.end(), from, from + static_cast<std::ptrdiff_t>(line));
    }
    return turned;
  }

  chain_test::FakeDisplay display;
};
