// All stages on the card, with their inner side open, each with a picture that it takes.
#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "GLSpy.h"
#include "StageFixture.h"
#include "gl/stages/QGLIPBayer.h"
#include "gl/stages/QGLIPColorCorrection.h"
#include "gl/stages/QGLIPExposureColoration.h"
#include "gl/stages/QGLIPImageOverlay.h"
#include "gl/stages/QGLIPUnpack.h"

namespace every_stage {

constexpr uint32_t kWidth = 8, kHeight = 6;

// What a test reaches into.
class Inside {
 public:
  virtual ~Inside() = default;
  virtual ZynImgProcessor& Face() = 0;
  virtual std::unique_ptr<QGLImage>& Target() = 0;
  virtual uint32_t LastError() = 0;
  virtual bool Ready() = 0;
};

template <typename Stage>
class Open : public Stage, public Inside {
 public:
  using Stage::Stage;
  ZynImgProcessor& Face() override { return *this; }
  std::unique_ptr<QGLImage>& Target() override { return this->target; }
  uint32_t LastError() override { return this->lastError; }
  bool Ready() override { return this->IsReady(); }
};

template <typename Stage>
std::unique_ptr<Inside> Make(ZynDisplayProcessor* display, ZynComponent*) {
  return std::make_unique<Open<Stage>>(display);
}
inline std::unique_ptr<Inside> MakeColoration(ZynDisplayProcessor* display, ZynComponent* chain) {
  return std::make_unique<Open<QGLIPExposureColoration>>(display, chain);
}

struct Sort {
  const char* name;
  uint32_t code;  // of the pictures that it takes
  std::unique_ptr<Inside> (*make)(ZynDisplayProcessor* display, ZynComponent* chain);
  uint32_t notReady = 8;   // answer to a picture without `Init`
  uint32_t noSurface = 8;  // answer of `Init`
  bool hasPass = true;
  const char* parameter = "";                     // a number that a run reads, and `Init` does not mind
  const char* initParameter = "image.flip.vert";  // a number that `Init` reads
};

inline std::vector<Sort> Sorts() {
  return {{"Unpack", ZYN_PIXEL_MONO10P, Make<QGLIPUnpack>, 7},
          {"Bayer", ZYN_PIXEL_BAYERGR8, Make<QGLIPBayer>, 8, 8, true, "image.color.coef"},
          {"Correction", ZYN_PIXEL_RGB8, Make<QGLIPColorCorrection>},
          {"Coloration", ZYN_PIXEL_RGB8, MakeColoration, 8, 8, true, "image.color.mono", "thres.hi"},
          {"Image", ZYN_PIXEL_RGB8, Make<QGLIPImage>, 8, 8, false, "readGPU"},
          // Keeps the lack of a surface to itself.
          {"Overlay", ZYN_PIXEL_RGB8, Make<QGLIPImageOverlay>, 8, 0, false, "image.color.coef"}};
}

inline std::vector<Sort> WithText() {
  std::vector<Sort> sorts = Sorts();
  const auto hasNone = [](const Sort& sort) { return *sort.parameter == '\0'; };
  sorts.erase(std::remove_if(sorts.begin(), sorts.end(), hasNone), sorts.end());
  return sorts;
}

inline GLint State(GLenum name) {
  GLint value = -1;
  glGetIntegerv(name, &value);
  return value;
}

// What is drawn or bound next must not land where a stage worked.
inline void ExpectNothingBound() {
  EXPECT_EQ(State(GL_DRAW_FRAMEBUFFER_BINDING), 0);
  EXPECT_EQ(State(GL_READ_FRAMEBUFFER_BINDING), 0);
  EXPECT_EQ(State(GL_RENDERBUFFER_BINDING), 0);
  EXPECT_EQ(State(GL_CURRENT_PROGRAM), 0);
  EXPECT_EQ(State(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
}

inline std::ostream& operator<<(std::ostream& stream, const Sort& sort) {
  return stream << sort.name;
}
inline std::string NameOf(const testing::TestParamInfo<Sort>& sort) {
  return sort.param.name;
}

class EveryStage : public StageFixture, public testing::WithParamInterface<Sort> {
 protected:
  void SetUp() override {
    StageFixture::SetUp();
    if (HasFatalFailure()) return;
    values.out = values.sourceInfo = camera.get();
    chain.unpacked = &values;
  }
  std::unique_ptr<Inside> MakeStage(ZynDisplayProcessor* owner) { return GetParam().make(owner, &chain); }
  std::unique_ptr<Inside> MakeStage() { return MakeStage(&display); }

  uint32_t InitOf(Inside& stage) { return stage.Face().Init(picture.get(), nullptr); }
  uint32_t RunOf(Inside& stage) { return Run(stage.Face(), picture.get()); }

  // The stage has another target then; its pass keeps the one of `Init`, which is none any more, and which
  // the caller has to keep until the stage has gone.
  std::unique_ptr<QGLImage> LoseTarget(Inside& stage) {
    std::unique_ptr<QGLImage> lost = std::move(stage.Target());
    stage.Target() = made(lost->image()->width, lost->image()->height, lost->image()->pixelType);
    lost->done();
    return lost;
  }

  // Judged by the coloration; in memory, so that no stage but the one under test asks for the surface.
  const Record camera = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, Scattered(kWidth* kHeight, 255));
  chain_test::FakeStage values{"values", nullptr};
  FakeChain chain;
  const Record picture = MakeRecord(kWidth, kHeight, GetParam().code);
};

}  // namespace every_stage
