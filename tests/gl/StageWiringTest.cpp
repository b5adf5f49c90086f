// What all stages on the card share: where the surface comes from, what they refuse, and what they leave
// behind.
#include <thread>

#include "StageFixture.h"
#include "chain/TraceCapture.h"
#include "gl/stages/QGLIPBayer.h"
#include "gl/stages/QGLIPColorCorrection.h"
#include "gl/stages/QGLIPExposureColoration.h"
#include "gl/stages/QGLIPImageOverlay.h"
#include "gl/stages/QGLIPUnpack.h"

namespace {

constexpr uint32_t kWidth = 8, kHeight = 6;

struct StageKind {
  const char* className;
  uint32_t code;  // of the pictures that it takes
  ZynImgProcessor* (*make)(ZynDisplayProcessor* display, ZynComponent* chain);
  void (*destroy)(ZynImgProcessor* stage);
  uint32_t notReady = 8;      // answer to a picture before `Init`
  uint32_t nullNotReady = 8;  // answer to none before `Init`
  uint32_t nullSource = 8;    // answer of `Init`
  uint32_t noSurface = 8;     // answer of `Init`
  uint32_t tooLarge = 0;      // answer of `Init` to a picture beyond the card's limits
  bool hasPass = true;
};

using Card = ZynDisplayQGL;

template <typename Face>
ZynImgProcessor* Make(ZynDisplayProcessor* display, ZynComponent*) {
  return Face::CreateComponent(display);
}
ZynImgProcessor* MakeColoration(ZynDisplayProcessor* display, ZynComponent* chain) {
  return Card::ExposureColoration::CreateComponent(display, chain);
}

template <typename Face>
StageKind KindOf(const char* className, uint32_t code) {
  return {className, code, Make<Face>, Face::DeleteComponent};
}

std::vector<StageKind> Kinds() {
  StageKind unpack = KindOf<Card::Unpack>("QGLIPUnpack", ZYN_PIXEL_MONO10P);
  unpack.notReady = unpack.nullNotReady = unpack.nullSource = 7;
  unpack.tooLarge = 8;  // the others keep the lack to themselves
  const StageKind coloration{"QGLIPExposureColoration", ZYN_PIXEL_RGB8, MakeColoration,
                             Card::ExposureColoration::DeleteComponent};
  StageKind image = KindOf<Card::Image>("QGLIPImage", ZYN_PIXEL_RGB8);
  image.hasPass = false;
  StageKind overlay = KindOf<Card::ImageOverlay>("QGLIPImageOverlay", ZYN_PIXEL_RGB8);
  overlay.nullNotReady = overlay.nullSource = 7;
  overlay.noSurface = 0;  // it keeps the lack to itself
  overlay.hasPass = false;
  return {unpack,
          KindOf<Card::Bayer>("QGLIPBayer", ZYN_PIXEL_BAYERGR8),
          KindOf<Card::ColorCorrection>("QGLIPColorCorrection", ZYN_PIXEL_RGB8),
          coloration,
          image,
          overlay};
}

class StageWiring : public StageFixture, public testing::WithParamInterface<StageKind> {
 protected:
  using Owned = std::unique_ptr<ZynImgProcessor, void (*)(ZynImgProcessor*)>;

  void SetUp() override {
    StageFixture::SetUp();
    if (HasFatalFailure()) return;
    unpacked = std::make_unique<QGLIPImage>(&display);
    ASSERT_EQ(unpacked->Init(camera.get(), nullptr), 0u);
    ASSERT_EQ(unpacked->ProcessImage(camera.get(), nullptr, nullptr), 0u);
    chain.unpacked = unpacked.get();
  }
  void TearDown() override {
    unpacked.reset();
    StageFixture::TearDown();
  }
  Owned MakeStage() { return {Kind().make(&display, &chain), Kind().destroy}; }
  const StageKind& Kind() { return GetParam(); }

  FakeChain chain;
  const Record camera = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8);
  std::unique_ptr<QGLIPImage> unpacked;
  const Record picture = MakeRecord(kWidth, kHeight, GetParam().code);
};

TEST_P(StageWiring, takes_a_picture_from_memory_and_hands_on_a_record_on_the_card) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  ASSERT_NE(stage->Out(), nullptr);
  picture->imageID = 4711;
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  const ZynImage* const out = stage->Out();
  ASSERT_NE(out, nullptr);
  EXPECT_NE(AttachedTexture(out), 0u);
  EXPECT_EQ(out->imageID, 4711u);
  EXPECT_EQ(out->width, kWidth);
  EXPECT_EQ(out->height, kHeight);
}

TEST_P(StageWiring, tells_of_each_run_in_the_trace) {
  const Owned stage = MakeStage();
  const std::string line = Kind().className + std::string("::ProcessImage()");
  chain_test::TraceCapture trace;
  Run(*stage, nullptr);
  EXPECT_EQ(trace.lines, std::vector<std::string>{line}) << "also when there is nothing to do";
  ASSERT_EQ(Init(*stage, picture), 0u);
  trace.lines.clear();
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  EXPECT_EQ(trace.lines, std::vector<std::string>{line});
}

// A pass and an upload leave the result there, a plain copy what it was made from.
TEST_P(StageWiring, leaves_unit_0_selected_with_what_it_worked_on) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  const auto boundAfterARun = [&](const ZynImage* image) {
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    surface->glActiveTexture(GL_TEXTURE1);
    EXPECT_EQ(Run(*stage, image), 0u);
    GLint unit = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
    EXPECT_EQ(unit, GL_TEXTURE0);
    return static_cast<uint32_t>(bound());
  };
  const uint32_t result = AttachedTexture(stage->Out());
  ASSERT_NE(result, 0u);
  EXPECT_EQ(boundAfterARun(picture.get()), result);
  if (QTD::IsPackedFormat(picture->pixelType)) return;  // no texture holds such pixels
  OnCard before(&display, picture);
  EXPECT_EQ(boundAfterARun(before.record()), Kind().hasPass ? result : AttachedTexture(before.record()));
}

TEST_P(StageWiring, has_its_class_and_answers_its_own_component) {
  const Owned stage = MakeStage();
  char text[64] = "";
  uint32_t size = sizeof text;
  ASSERT_EQ(stage->GetComponent()->GetParameterString("class", text, &size), 0u);
  EXPECT_STREQ(text, Kind().className);
  EXPECT_TRUE(stage->IsEnabled());
  EXPECT_EQ(stage->Out(), nullptr);
  EXPECT_EQ(stage->GetImageInfo(true), nullptr);
  EXPECT_EQ(stage->GetImageInfo(false), nullptr);
  Kind().destroy(nullptr);  // is ignored
}

TEST_P(StageWiring, is_not_ready_before_init_and_after_release) {
  const Owned stage = MakeStage();
  EXPECT_EQ(Run(*stage, picture.get()), Composed(Kind().notReady));
  EXPECT_EQ(Run(*stage, nullptr), Composed(Kind().nullNotReady));
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_FALSE(stage->Enable(false));
  stage->Release();
  EXPECT_TRUE(stage->IsEnabled());
  EXPECT_EQ(stage->Out(), nullptr);
  EXPECT_EQ(stage->GetImageInfo(true), nullptr);
  EXPECT_EQ(Run(*stage, picture.get()), Composed(Kind().notReady));
}

TEST_P(StageWiring, refuses_a_null_source) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(stage->Init(nullptr, nullptr), Composed(Kind().nullSource));
  EXPECT_EQ(stage->Out(), nullptr);
}

TEST_P(StageWiring, has_no_surface_without_an_owner_of_this_library) {
  chain_test::FakeDisplay unnamed, nameless;
  unnamed.Publish(surface.get());
  unnamed.Parameters().Set("class", "AnotherDisplay");
  for (ZynDisplayProcessor* const owner :
       std::initializer_list<ZynDisplayProcessor*>{nullptr, &unnamed, &nameless}) {
    const Owned stage(Kind().make(owner, &chain), Kind().destroy);
    EXPECT_EQ(Init(*stage, picture), Composed(Kind().noSurface));
    EXPECT_EQ(Run(*stage, picture.get()), Composed(Kind().notReady));
  }
}

TEST_P(StageWiring, takes_an_owner_whatever_the_case_of_its_class) {
  display.Parameters().Set("class", "qtdDISPLAY");
  const Owned stage = MakeStage();
  EXPECT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
}

TEST_P(StageWiring, does_not_follow_a_surface_that_is_none) {
  display.Parameters().Set("surface", "0x1230");
  const Owned stage = MakeStage();
  EXPECT_EQ(Init(*stage, picture), Composed(Kind().noSurface));
}

TEST_P(StageWiring, refuses_pictures_of_another_size_and_has_no_result_then) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  for (const auto& [width, height] : {std::pair{kWidth + 4, kHeight}, {kWidth, kHeight + 1}, {4u, 2u}}) {
    const Record other = MakeRecord(width, height, Kind().code);
    EXPECT_EQ(Run(*stage, other.get()), Composed(7)) << width << "x" << height;
    EXPECT_EQ(stage->Out(), nullptr);
  }
  EXPECT_EQ(Run(*stage, nullptr), Composed(7));
  ZynImage empty = *picture;
  empty.width = empty.height = 0;
  EXPECT_EQ(Run(*stage, &empty), Composed(7));
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
  EXPECT_NE(stage->Out(), nullptr);
}

// Under the address sanitizer this also shows that nothing is read beyond the buffer.
TEST_P(StageWiring, fails_where_the_lines_cannot_lie_in_the_buffer) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  ZynImage lying = *picture;
  lying.imageSize = kWidth * kHeight - 1;
  EXPECT_EQ(Run(*stage, &lying), Composed(1));
  EXPECT_EQ(stage->Out(), nullptr);
  lying = *picture;
  lying.linePitch = 1 << 20;
  EXPECT_EQ(Run(*stage, &lying), Composed(1));
  lying = *picture;
  lying.imageData = nullptr;
  EXPECT_EQ(Run(*stage, &lying), Composed(1));
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
}

TEST_P(StageWiring, leaves_no_names_behind) {
  const GLNames before = names();
  Owned stage = MakeStage();
  EXPECT_EQ(names(), before);
  ASSERT_EQ(Init(*stage, picture), 0u);
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  const GLNames prepared = names();
  EXPECT_GT(prepared.framebuffers, before.framebuffers);
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(names(), prepared);
  stage->Release();
  EXPECT_EQ(names(), before);
  ASSERT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(names(), prepared);
  stage.reset();
  EXPECT_EQ(names(), before);
}

TEST_P(StageWiring, works_without_begin_and_end_around_it) {
  const GLNames before = names();
  surface->end(nullptr, false);
  {
    const Owned stage = MakeStage();
    EXPECT_EQ(Init(*stage, picture), 0u);
    EXPECT_EQ(Run(*stage, picture.get()), 0u);
    EXPECT_FALSE(surface->isActive());
  }
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(names(), before);
}

TEST_P(StageWiring, survives_its_surface) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  ASSERT_EQ(Run(*stage, picture.get()), 0u);
  unpacked->Release();
  surface->end(nullptr, false);
  surface.reset();
  EXPECT_EQ(Run(*stage, picture.get()), Composed(Kind().notReady));
  stage->GetComponent()->ExecuteCommand("readGPU");
  stage->GetComponent()->ExecuteCommand("params.apply");
  EXPECT_EQ(Init(*stage, picture), Composed(Kind().noSurface));
  EXPECT_EQ(stage->Out(), nullptr);
}

TEST_P(StageWiring, keeps_away_from_a_new_surface_until_the_next_init) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  unpacked->Release();
  surface->end(nullptr, false);
  surface->done();
  ASSERT_TRUE(surface->init(&list));  // the same object with another context
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(Run(*stage, picture.get()), Composed(Kind().notReady));
  ASSERT_EQ(unpacked->Init(camera.get(), nullptr), 0u);
  ASSERT_EQ(unpacked->ProcessImage(camera.get(), nullptr, nullptr), 0u);
  EXPECT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
}

TEST_P(StageWiring, a_command_from_another_thread_leaves_the_pass_of_this_one_alone) {
  const Owned stage = MakeStage();
  ASSERT_EQ(Init(*stage, picture), 0u);
  std::thread([&] {
    stage->GetComponent()->ExecuteCommand("readGPU");
    EXPECT_NE(Run(*stage, picture.get()), 0u);  // the card is this thread's
  }).join();
  EXPECT_TRUE(surface->isActive());
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
}

TEST_P(StageWiring, leaves_nothing_behind_when_another_thread_releases_it) {
  const GLNames before = names();
  Owned stage = MakeStage();
  for (const bool whole : {false, true}) {
    ASSERT_EQ(Init(*stage, picture), 0u);
    ASSERT_EQ(Run(*stage, picture.get()), 0u);
    std::thread([&] {
      stage->Release();
      if (whole) stage.reset();
    }).join();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(names(), before);
  }
}

TEST_P(StageWiring, a_picture_beyond_the_limits_of_the_card_is_told) {
  const uint32_t tooWide = static_cast<uint32_t>(surface->properties.GetInt("gl.texture")) + 8;
  const Record wide(QTD::ImageCreateHeader(nullptr, tooWide, 2, Kind().code));
  const Owned stage = MakeStage();
  EXPECT_EQ(Init(*stage, wide), Composed(Kind().tooLarge));
  const Record pixels = MakeRecord(tooWide, 2, Kind().code);
  EXPECT_EQ(Run(*stage, pixels.get()), Composed(Kind().notReady));
  EXPECT_EQ(Init(*stage, picture), 0u);
  EXPECT_EQ(Run(*stage, picture.get()), 0u);
}

INSTANTIATE_TEST_SUITE_P(Stages, StageWiring, testing::ValuesIn(Kinds()),
                         [](const testing::TestParamInfo<StageKind>& kind) { return kind.param.className; });

// Two keep their name in a text of their own, and the common one stays empty; two share one.
TEST(StageNames, are_those_of_the_card) {
  struct OpenUnpack : QGLIPUnpack {
    using QGLIPUnpack::name;
    using QGLIPUnpack::QGLIPUnpack;
  };
  struct OpenBayer : QGLIPBayer {
    using QGLIPBayer::name;
    using QGLIPBayer::QGLIPBayer;
  };
  struct OpenCorrection : QGLIPColorCorrection {
    using QGLIPColorCorrection::name;
    using QGLIPColorCorrection::QGLIPColorCorrection;
  };
  struct OpenColoration : QGLIPExposureColoration {
    using QGLIPExposureColoration::name;
    using QGLIPExposureColoration::QGLIPExposureColoration;
  };
  struct OpenImage : QGLIPImage {
    using QGLIPImage::name;
    using QGLIPImage::QGLIPImage;
  };
  struct OpenOverlay : QGLIPImageOverlay {
    using QGLIPImageOverlay::name;
    using QGLIPImageOverlay::QGLIPImageOverlay;
  };
  EXPECT_EQ(OpenUnpack(nullptr).name, "");
  EXPECT_EQ(OpenBayer(nullptr).name, "");
  EXPECT_EQ(OpenCorrection(nullptr).name, "correction.gpu");
  EXPECT_EQ(OpenColoration(nullptr, nullptr).name, "correction.gpu");
  EXPECT_EQ(OpenImage(nullptr).name, "image.gpu");
  EXPECT_EQ(OpenOverlay(nullptr).name, "image.overlay.gpu");
}

}  // namespace
