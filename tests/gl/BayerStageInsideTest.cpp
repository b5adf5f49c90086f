// The Bayer stage: its target, its failures, and the debug picture of its shader.
#include "EveryStage.h"
#include "gl/passes/ShaderSources.h"

namespace {

using every_stage::kHeight;
using every_stage::kWidth;
using OpenBayer = every_stage::Open<QGLIPBayer>;

class BayerStageInside : public StageFixture {
 protected:
  const Samples samples = Scattered(kWidth * kHeight, 255);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_BAYERGR8, samples);
};

// The programs are those of the target and of the pass, in this order; the second is not to be had.
int programs = 0;
GLuint (*createProgram)() = nullptr;
GLuint FirstProgramOnly() {
  return ++programs == 1 ? createProgram() : 0;
}

TEST_F(BayerStageInside, gives_turn_and_factor_on_to_its_target) {
  OpenBayer stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(stage.Target()->properties().GetString("image.color.coef"), "1.");
  EXPECT_EQ(stage.Target()->properties().GetString("image.flip.vert"), "0");
  stage.SetParameterString("image.color.coef", "2.5");
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(stage.Target()->properties().GetString("image.color.coef"), "2.5");
  EXPECT_EQ(stage.Target()->properties().GetString("image.flip.vert"), "1");
  EXPECT_EQ(stage.Target()->image()->origin, 1u);
  EXPECT_EQ(stage.Parameters().GetString("image.color.coef"), "2.5");
  EXPECT_EQ(stage.Parameters().GetString("image.flip.vert"), "1");
}

TEST_F(BayerStageInside, a_pass_that_cannot_be_prepared_ends_init_with_8_and_leaves_nothing) {
  const GLNames before = names();
  OpenBayer stage(&display);
  stage.Enable(false);
  createProgram = FunctionTable::of(*surface).CreateProgram;
  programs = 0;
  {
    const Swapped scarce(FunctionTable::of(*surface).CreateProgram, &FirstProgramOnly);
    EXPECT_EQ(Init(stage, picture), Composed(8));
  }
  EXPECT_GE(programs, 2);
  EXPECT_EQ(stage.LastError(), 8u);
  EXPECT_FALSE(stage.Ready());
  EXPECT_EQ(stage.Target(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(names(), before);
  EXPECT_EQ(Run(stage, picture.get()), Composed(8));
  EXPECT_EQ(Init(stage, picture), 0u);
  EXPECT_EQ(Run(stage, picture.get()), 0u);
}

// The debug picture 1000 is the source as it lies there: no factor acts on it.
TEST_F(BayerStageInside, the_debug_picture_of_the_source_is_not_scaled) {
  QOpenGLShaderProgram program;
  program.addShaderFromSourceCode(QOpenGLShader::Vertex, FindShaderSource("bayer.mmhc.v.glsl"));
  program.addShaderFromSourceCode(QOpenGLShader::Fragment, FindShaderSource("bayer.mmhc.f.glsl"));
  ASSERT_TRUE(program.link()) << program.log().toStdString();
  OnCard mosaic(&display, picture);
  auto target = made(kWidth, kHeight, ZYN_PIXEL_RGB8);
  Samples wanted;
  for (const uint32_t sample : samples) wanted.insert(wanted.end(), 3, sample);
  for (const float factor : {0.5F, 1.0F, 2.0F}) {
    surface->glBindTexture(GL_TEXTURE_2D, AttachedTexture(mosaic.record()));
    target->bind();
    program.bind();
    program.setUniformValue("source", 0);
    program.setUniformValue("sourceSize", float{kWidth}, float{kHeight}, 1.0F / kWidth, 1.0F / kHeight);
    program.setUniformValue("firstRed", 1.0F, 0.0F);
    program.setUniformValue("colorCoef", factor);
    program.setUniformValue("colorHigh", 1.0F);
    program.setUniformValue("debug", 1000);
    target->render();
    program.release();
    target->unbind();
    EXPECT_EQ(ReadTexture(target->texture(), 3, 8), wanted) << factor;
  }
}

}  // namespace
