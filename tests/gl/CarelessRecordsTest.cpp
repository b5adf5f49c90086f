// Records and parameters that no stage of the library makes.
#include "StageFixture.h"
#include "gl/stages/QGLIPBayer.h"
#include "gl/stages/QGLIPColorCorrection.h"
#include "gl/stages/QGLIPExposureColoration.h"
#include "gl/stages/QGLIPImageOverlay.h"

namespace {

constexpr uint32_t kWidth = 8, kHeight = 6;

class CarelessRecordsTest : public StageFixture {
 protected:
  static GLint boundFramebuffer() {
    GLint name = -1;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &name);
    return name;
  }

  const Samples samples = Scattered(kWidth * kHeight, 255);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, samples);
};

TEST_F(CarelessRecordsTest, attachments_of_a_host_s_record_are_not_followed) {
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ZynImage careless = *picture;
  careless.attachments = reinterpret_cast<void*>(0x10);
  EXPECT_EQ(AttachedImage(&careless), nullptr);
  EXPECT_EQ(AttachedTexture(&careless), 0u);
  EXPECT_EQ(Run(stage, &careless), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

TEST_F(CarelessRecordsTest, a_copy_of_a_stage_s_record_has_its_texture_as_long_as_that_lives) {
  auto first = std::make_unique<OnCard>(&display, picture);
  const ZynImage copy = *first->record();
  EXPECT_EQ(AttachedTexture(&copy), AttachedTexture(first->record()));
  EXPECT_NE(AttachedTexture(&copy), 0u);
  first.reset();
  EXPECT_EQ(AttachedTexture(&copy), 0u);
}

// A host's stage that works in memory may begin with a copy of the record.
TEST_F(CarelessRecordsTest, a_copy_with_pixels_of_its_own_lies_in_memory) {
  OnCard first(&display, picture);
  const Samples others = Scattered(kWidth * kHeight, 255, 7);
  const Record own = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8, others);
  ZynImage copy = *first.record();
  copy.imageData = own->imageData;
  EXPECT_EQ(AttachedTexture(&copy), 0u);
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, &copy), 0u);
  EXPECT_EQ(Texels(stage), others);
}

TEST_F(CarelessRecordsTest, a_block_of_the_host_s_may_stand_before_that_of_the_card) {
  OnCard first(&display, picture);
  QGLImageAttachment own;
  own.tag = 1;
  ZynImage* const record = first.stage.Out();
  own.next = record->attachments;
  record->attachments = &own;
  EXPECT_NE(AttachedTexture(record), 0u);
  const ZynImage copy = *record;
  EXPECT_EQ(AttachedTexture(&copy), AttachedTexture(record));
  record->attachments = own.next;
}

TEST_F(CarelessRecordsTest, a_copy_that_lies_about_its_size_is_refused) {
  OnCard first(&display, picture);
  ZynImage copy = *first.record();
  copy.width = 2 * kWidth;
  const Record larger = MakeRecord(2 * kWidth, kHeight, ZYN_PIXEL_MONO8);
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, larger), 0u);
  EXPECT_EQ(Run(stage, &copy), Composed(7));
}

// Its own record's pixels are those of the last read-back.
TEST_F(CarelessRecordsTest, a_stage_s_own_result_counts_once_it_was_read_back) {
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  ZynImage* const own = stage.Out();
  EXPECT_EQ(Run(stage, own), Composed(1));
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  ASSERT_EQ(stage.ExecuteCommand("readGPU"), 0u);
  EXPECT_EQ(Run(stage, own), 0u);
  EXPECT_EQ(Texels(stage), samples);
}

// What the record's memory holds is an earlier picture from then on.
TEST_F(CarelessRecordsTest, a_target_that_is_drawn_or_filled_anew_counts_as_not_read_back) {
  auto image = made(kWidth, kHeight, ZYN_PIXEL_MONO8);
  ASSERT_NE(image->readGPU(nullptr), nullptr);
  ASSERT_TRUE(image->IsRead());
  ASSERT_TRUE(image->fillGPU(picture.get()));
  EXPECT_FALSE(image->IsRead());
  ASSERT_NE(image->readGPU(nullptr), nullptr);
  ASSERT_TRUE(image->IsRead());
  ASSERT_NE(image->useProgram(false, nullptr), 0u);
  EXPECT_TRUE(image->render());
  EXPECT_TRUE(image->releaseProgram());
  EXPECT_FALSE(image->IsRead());
}

// The record goes at once; what it said counts.
TEST_F(CarelessRecordsTest, a_target_may_be_made_anew_like_its_own_record) {
  auto image = made(kWidth, kHeight, ZYN_PIXEL_MONO12);
  ASSERT_NE(image->readGPU(nullptr), nullptr);
  EXPECT_TRUE(image->IsRead());
  for (const char* const key : {"size.x", "size.y", "pixeltype"}) image->properties().Set(key, "0");
  ASSERT_TRUE(image->init(image->image(), nullptr));
  EXPECT_EQ(image->image()->width, kWidth);
  EXPECT_EQ(image->image()->height, kHeight);
  EXPECT_EQ(image->image()->pixelType, ZYN_PIXEL_MONO12);
  EXPECT_FALSE(image->IsRead());
}

TEST_F(CarelessRecordsTest, a_target_that_failed_leaves_nothing) {
  const GLNames before = names();
  {
    QGLImage image(surface.get());
    surface->glEnable(0xffff);
    EXPECT_FALSE(image.init(picture.get(), nullptr));
    EXPECT_FALSE(image.isValid());
    EXPECT_EQ(image.image(), nullptr);
    image.properties().Set("filter", "smooth");
    EXPECT_THROW(image.init(picture.get(), nullptr), std::invalid_argument);
    EXPECT_FALSE(image.isValid());
    EXPECT_EQ(image.image(), nullptr);
  }
  EXPECT_EQ(names(), before);
  surface->properties.Set("error", "");
}

TEST_F(CarelessRecordsTest, stages_answer_8_after_a_target_that_failed) {
  const Record rgb = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8);
  QGLIPImage image(&display);
  QGLIPColorCorrection correction(&display);
  for (ZynImgProcessor* const stage :
       {static_cast<ZynImgProcessor*>(&image), static_cast<ZynImgProcessor*>(&correction)}) {
    surface->properties.Set("gl.renderbuffer", "4");  // smaller than the picture
    EXPECT_EQ(stage->Init(rgb.get(), nullptr), 0u);
    surface->properties.Set("gl.renderbuffer", "16384");
    EXPECT_EQ(Run(*stage, rgb.get()), Composed(8));
    EXPECT_EQ(stage->Out(), nullptr);
  }
}

// What is drawn next would land in the stage's target.
TEST_F(CarelessRecordsTest, a_factor_that_is_no_number_leaves_no_target_bound) {
  const Record rgb = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8);
  QGLIPImageOverlay overlay(&display);
  overlay.SetParameterString("image.color.coef", "much");
  ASSERT_EQ(overlay.Init(picture.get(), nullptr), 0u);
  OnCard first(&display, picture);
  EXPECT_EQ(Run(overlay, first.record()), Composed(1));
  EXPECT_EQ(boundFramebuffer(), 0);

  QGLIPImage image(&display);
  image.SetParameterString("image.color.coef", "much");
  EXPECT_EQ(image.Init(picture.get(), rgb.get()), Composed(1));

  FakeChain chain;
  chain.unpacked = &first.stage;
  QGLIPExposureColoration coloration(&display, &chain);
  coloration.SetParameterString("image.color.mono", "yes");
  ASSERT_EQ(coloration.Init(rgb.get(), nullptr), 0u);
  coloration.Enable(false);
  OnCard shown(&display, rgb);
  EXPECT_EQ(Run(coloration, shown.record()), Composed(1));
  EXPECT_EQ(boundFramebuffer(), 0);
}

// A number other than 0 and 1 marks the result as turned; so it is turned.
TEST_F(CarelessRecordsTest, any_number_but_0_turns) {
  const Record wanted = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO16);
  OnCard first(&display, picture);
  QGLIPImage image(&display);
  QGLIPImageOverlay overlay(&display);
  for (ZynImgProcessor* const stage :
       {static_cast<ZynImgProcessor*>(&image), static_cast<ZynImgProcessor*>(&overlay)}) {
    stage->GetComponent()->SetParameterInt("image.flip.vert", 2);
    ASSERT_EQ(stage->Init(picture.get(), nullptr), 0u);
    ASSERT_EQ(Run(*stage, first.record()), 0u);
    EXPECT_EQ(Texels(*stage), Turned(samples, kHeight));
    EXPECT_EQ(stage->Out()->origin, 1u);
  }
}

TEST_F(CarelessRecordsTest, depths_that_no_image_has_prepare_the_image_stage) {
  const Record shown = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8);
  for (const uint32_t depth : {0u, 17u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(depth);
    ZynImage source = *picture, output = *shown;
    QGLIPImage stage(&display);
    source.bitDepth = depth;
    EXPECT_EQ(stage.Init(&source, &output), 0u);
    output.bitDepth = 0xFFFFFFFFu - depth;
    EXPECT_EQ(stage.Init(&source, &output), 0u);
  }
}

// The values of a stage of the host's, on the card.
class StageOfDepth : public QGLIPImage {
 public:
  using QGLIPImage::QGLIPImage;
  ZynImage* Out() override { return Told(QGLIPImage::Out(), outs); }
  ZynImage* GetImageInfo(bool source) override { return Told(QGLIPImage::GetImageInfo(source), infos); }
  uint32_t depth = 8;

 private:
  ZynImage* Told(const ZynImage* record, ZynImage& told) const {
    if (!record) return nullptr;
    told = *record;
    told.bitDepth = depth;
    return &told;
  }
  ZynImage outs{}, infos{};
};

TEST_F(CarelessRecordsTest, values_of_a_depth_that_no_image_has_mark_nothing_until_they_have_one) {
  FakeChain chain;
  StageOfDepth unpacked(&display);
  ASSERT_EQ(Init(unpacked, picture), 0u);
  ASSERT_EQ(Run(unpacked, picture.get()), 0u);
  chain.unpacked = &unpacked;
  const Record rgb = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, Scattered(kWidth * kHeight * 3, 255));
  OnCard shown(&display, rgb);
  for (const uint32_t depth : {0u, 17u, 0x80000000u}) {
    SCOPED_TRACE(depth);
    unpacked.depth = depth;
    QGLIPExposureColoration stage(&display, &chain);
    ASSERT_EQ(Init(stage, rgb), 0u);
    EXPECT_EQ(Run(stage, shown.record()), Composed(8));
    unpacked.depth = 8;
    EXPECT_EQ(Run(stage, shown.record()), 0u);
  }
}

}  // namespace
