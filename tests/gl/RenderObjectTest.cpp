// What all passes have in common, and what the texts of their shaders have to be.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <regex>
#include <thread>

#include "PassFixture.h"
#include "gl/passes/QGLBayerMHC.h"
#include "gl/passes/QGLColorCorrection.h"
#include "gl/passes/QGLExposureColoration.h"
#include "gl/passes/QGLUnpackU3V.h"
#include "gl/passes/ShaderSources.h"

namespace {

// A pass with its protected side open.
template <typename Pass>
class Open : public Pass {
 public:
  using Pass::Pass;
  using Pass::program;
  using Pass::uniforms;
};

using OpenUnpack = Open<RenderObjects::QGLUnpackU3V>;
using OpenBayer = Open<RenderObjects::QGLBayerMHC>;
using OpenCorrection = Open<RenderObjects::QGLColorCorrection>;
using OpenColoration = Open<RenderObjects::QGLExposureColoration>;

class RenderObject : public PassFixture {
 protected:
  // Every pass once, made for this surface, with the code of an image for it.
  template <typename Check>
  void forEachPass(Check check, QGLSurface* passSurface) {
    SCOPED_TRACE("each pass");
    RenderObjects::QGLUnpackU3V unpack(passSurface);
    check(unpack, ZYN_PIXEL_MONO10P);
    RenderObjects::QGLBayerMHC bayer(passSurface);
    check(bayer, ZYN_PIXEL_BAYERGR8);
    RenderObjects::QGLColorCorrection correction(passSurface);
    check(correction, ZYN_PIXEL_RGB8);
    RenderObjects::QGLExposureColoration coloration(passSurface);
    check(coloration, ZYN_PIXEL_RGB8);
  }

  static std::vector<std::string> Names(QTD::PROPERTIES& list) {
    std::vector<std::string> names;
    for (int i = 0; i < list.Count(); ++i) names.push_back(list.NameAt(i));
    return names;
  }

  // The names in their order; the location of each is the driver's.
  template <typename Pass>
  void expectUniforms(uint32_t code, const std::vector<std::string>& expected) {
    makeTarget(8, 8, ZYN_PIXEL_RGB8);
    Pass pass(surface.get());
    ASSERT_TRUE(init(pass, 8, 8, code));
    EXPECT_EQ(Names(pass.uniforms), expected);
    for (const std::string& name : expected) {
      EXPECT_EQ(pass.uniforms.GetString(name),
                QTD::ToText(surface->glGetUniformLocation(pass.program.programId(), name.c_str())));
      EXPECT_NE(pass.uniforms.GetInt(name), -1) << name;
    }
  }
};

const char* const kShaderNames[] = {
    "image.v.glsl",      "image.f.glsl",      "bayer.mmhc.v.glsl", "bayer.mmhc.f.glsl", "corr.color.v.glsl",
    "corr.color.f.glsl", "unpack.u3v.v.glsl", "unpack.u3v.f.glsl", "coloration.v.glsl", "coloration.f.glsl"};

std::string ShaderText(const std::string& name) {
  const char* const text = FindShaderSource(name.c_str());
  return text ? text : "";
}

std::map<std::string, std::string> DeclaredUniforms(const std::string& name) {
  const std::string text = ShaderText(name);
  const std::regex declaration("uniform\\s+(\\w+)\\s+(\\w+)\\s*;");
  std::map<std::string, std::string> types;
  for (std::sregex_iterator found(text.begin(), text.end(), declaration), end; found != end; ++found) {
    types[(*found)[2]] = (*found)[1];
  }
  return types;
}

// Whether `call` comes back only when another thread has given the pass's lock up.
template <typename Call>
bool WaitsForLock(QGLRenderObject& pass, const Call& call) {
  std::atomic<bool> held{false}, released{false};
  std::thread holder([&] {
    const QTD::RMutexLock guard(pass.Lock());
    held = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    released = true;
  });
  while (!held) std::this_thread::yield();
  call();
  const bool waited = released;
  holder.join();
  return waited;
}

}  // namespace

TEST(ShaderTexts, carry_their_language_marks) {
  const std::string version = "#version 120\n", extension = "#extension GL_EXT_gpu_shader4 : enable\n";
  const std::map<std::string, std::string> marks = {
      {"corr.color.v.glsl", version}, {"corr.color.f.glsl", version}, {"unpack.u3v.v.glsl", version},
      {"coloration.v.glsl", version}, {"coloration.f.glsl", version}, {"unpack.u3v.f.glsl", extension},
  };
  for (const char* const name : kShaderNames) {
    const auto mark = marks.find(name);
    const std::string text = ShaderText(name);
    if (mark == marks.end()) {
      EXPECT_EQ(text.find("#version"), std::string::npos) << name;
      EXPECT_EQ(text.find("#extension"), std::string::npos) << name;
    } else {
      EXPECT_EQ(text.substr(0, mark->second.size()), mark->second) << name;
    }
  }
}

TEST(ShaderTexts, declare_the_same_uniforms_in_both_of_a_pair) {
  for (const char* const pair : {"image", "bayer.mmhc", "corr.color", "unpack.u3v", "coloration"}) {
    const auto vertex = DeclaredUniforms(std::string(pair) + ".v.glsl");
    EXPECT_EQ(vertex, DeclaredUniforms(std::string(pair) + ".f.glsl")) << pair;
    EXPECT_GE(vertex.size(), 4u) << pair;
  }
}

TEST(RenderObjectBase, succeeds_at_everything_and_has_no_picture) {
  QTD::RenderObject object(nullptr);
  EXPECT_TRUE(object.Prepare());
  EXPECT_TRUE(object.Init(nullptr, nullptr));
  EXPECT_TRUE(object.Render(nullptr, nullptr));
  EXPECT_EQ(object.Out(), nullptr);
  EXPECT_EQ(object.GetImageInfo(true), nullptr);
  EXPECT_EQ(object.GetImageInfo(false), nullptr);
}

TEST(RenderObjectBase, forgets_its_parameters_on_release) {
  QTD::RenderObject object(nullptr);
  object.Parameters().Set("gamma", "1");
  object.Release();
  EXPECT_EQ(object.Parameters().Count(), 0);
}

TEST_F(RenderObject, links_every_pair_of_shaders_without_a_word) {
  for (const char* const pair : {"bayer.mmhc", "corr.color", "unpack.u3v", "coloration"}) {
    QOpenGLShaderProgram program;
    const std::string vertex = ShaderText(std::string(pair) + ".v.glsl");
    const std::string fragment = ShaderText(std::string(pair) + ".f.glsl");
    EXPECT_TRUE(program.addShaderFromSourceCode(QOpenGLShader::Vertex, vertex.c_str())) << pair;
    EXPECT_TRUE(program.addShaderFromSourceCode(QOpenGLShader::Fragment, fragment.c_str())) << pair;
    EXPECT_TRUE(program.link()) << pair;
    EXPECT_EQ(program.log().toStdString(), "") << pair;
  }
}

TEST_F(RenderObject, resolves_the_uniforms_of_each_pass) {
  expectUniforms<OpenUnpack>(ZYN_PIXEL_MONO10P, {"method", "outputSize", "sourceSize", "source"});
  expectUniforms<OpenBayer>(ZYN_PIXEL_BAYERGR8,
                            {"colorHigh", "colorCoef", "flipVert", "firstRed", "sourceSize", "source"});
  expectUniforms<OpenCorrection>(ZYN_PIXEL_RGB8, {"debugOutput", "debugMode", "colorHigh", "colorCoef",
                                                  "flipVert", "source", "gamma", "gain", "offs"});
  expectUniforms<OpenColoration>(ZYN_PIXEL_RGB8, {"sourceMono", "colorHigh", "colorCoef", "colored", "source",
                                                  "thresholds", "clrHi", "clrLo"});
}

TEST_F(RenderObject, gives_an_unknown_uniform_the_location_minus_1) {
  makeTarget(4, 4, ZYN_PIXEL_RGB8);
  OpenCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, 4, 4, ZYN_PIXEL_RGB8));
  pass.uniforms.Set("nothing", "0");
  EXPECT_TRUE(pass.Prepare());
  EXPECT_EQ(pass.uniforms.GetString("nothing"), "-1");
  GLint bound = 0;
  glGetIntegerv(GL_CURRENT_PROGRAM, &bound);
  EXPECT_EQ(bound, static_cast<GLint>(pass.program.programId()));
  pass.program.release();
}

TEST_F(RenderObject, refuses_a_null_image_without_taking_the_lock) {
  forEachPass(
      [](QGLRenderObject& pass, uint32_t) {
        std::atomic<bool> held{false}, refused{false};
        std::thread holder([&] {
          const QTD::RMutexLock guard(pass.Lock());
          held = true;
          // Gives up after ten seconds, so that a pass that waits for the lock fails and does not hang.
          for (int i = 0; i < 10000 && !refused; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
          EXPECT_TRUE(refused);
        });
        while (!held) std::this_thread::yield();
        EXPECT_FALSE(pass.Init(nullptr, nullptr));
        refused = true;
        holder.join();
        EXPECT_EQ(pass.Out(), nullptr);
      },
      surface.get());
}

TEST_F(RenderObject, waits_for_the_lock_before_it_renders) {
  makeTarget(4, 4, ZYN_PIXEL_RGB8);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, 4, 4, ZYN_PIXEL_RGB8));
  EXPECT_TRUE(WaitsForLock(pass, [&] { EXPECT_TRUE(pass.Render(source.get(), nullptr)); }));
}

TEST_F(RenderObject, waits_for_the_lock_before_it_is_prepared_or_released) {
  forEachPass(
      [](QGLRenderObject& pass, uint32_t code) {
        const Record image = MakeHeader(4, 4, code);
        EXPECT_TRUE(WaitsForLock(pass, [&] { EXPECT_TRUE(pass.Init(image.get(), nullptr)); }));
        EXPECT_TRUE(WaitsForLock(pass, [&] { pass.Release(); }));
      },
      surface.get());
}

// What is drawn then would land in the window, or in a context of the host's.
TEST_F(RenderObject, renders_nothing_outside_begin_and_end) {
  forEachPass(
      [this](QGLRenderObject& pass, uint32_t code) {
        const Record image = MakeHeader(4, 4, code);
        QTD::PROPERTIES arguments;
        ASSERT_TRUE(pass.Init(image.get(), nullptr));
        surface->end(nullptr, false);
        EXPECT_FALSE(pass.Render(image.get(), &arguments));
        ASSERT_TRUE(surface->begin(nullptr));
        EXPECT_TRUE(pass.Render(image.get(), &arguments));
        surface->glActiveTexture(GL_TEXTURE0);
      },
      surface.get());
}

TEST_F(RenderObject, cannot_be_prepared_without_a_surface) {
  forEachPass(
      [](QGLRenderObject& pass, uint32_t code) {
        const Record image = MakeHeader(4, 4, code);
        EXPECT_FALSE(pass.Init(image.get(), nullptr));
        EXPECT_FALSE(pass.Render(image.get(), nullptr));
        EXPECT_EQ(pass.Out(), nullptr);
      },
      nullptr);
}

TEST_F(RenderObject, renders_nothing_before_init_and_without_an_image) {
  forEachPass(
      [this](QGLRenderObject& pass, uint32_t code) {
        const Record image = MakeHeader(4, 4, code);
        QTD::PROPERTIES arguments;
        EXPECT_FALSE(pass.Render(image.get(), &arguments));
        EXPECT_TRUE(pass.Init(image.get(), nullptr));
        EXPECT_FALSE(pass.Render(nullptr, &arguments));
        EXPECT_TRUE(pass.Render(image.get(), &arguments));
        surface->glActiveTexture(GL_TEXTURE0);
      },
      surface.get());
}

TEST_F(RenderObject, renders_nothing_into_a_target_that_is_not_ready) {
  QGLImage unready(surface.get());
  forEachPass(
      [&](QGLRenderObject& pass, uint32_t code) {
        const Record image = MakeHeader(4, 4, code);
        QTD::PROPERTIES parameters;
        parameters.Set("output", pointerText(&unready));
        pass.Init(image.get(), &parameters);
        EXPECT_FALSE(pass.Render(image.get(), &parameters));
      },
      surface.get());
}

TEST_F(RenderObject, leaves_no_program_and_no_target_bound) {
  forEachPass(
      [this](QGLRenderObject& pass, uint32_t code) {
        const auto bound = [](GLenum what) {
          GLint name = -1;
          glGetIntegerv(what, &name);
          return name;
        };
        const Record image = MakeHeader(4, 4, code);
        QTD::PROPERTIES arguments;
        ASSERT_TRUE(pass.Init(image.get(), nullptr));
        EXPECT_EQ(bound(GL_CURRENT_PROGRAM), 0);
        ASSERT_TRUE(pass.Render(image.get(), &arguments));
        EXPECT_EQ(bound(GL_CURRENT_PROGRAM), 0);
        EXPECT_EQ(bound(GL_FRAMEBUFFER_BINDING), 0);
        EXPECT_EQ(bound(GL_RENDERBUFFER_BINDING), 0);
        surface->glActiveTexture(GL_TEXTURE0);
      },
      surface.get());
}

TEST_F(RenderObject, draws_into_the_output_and_leaves_it_alive) {
  makeTarget(4, 4, ZYN_PIXEL_RGB8);
  const GLNames before = names();
  {
    RenderObjects::QGLColorCorrection pass(surface.get());
    ASSERT_TRUE(init(pass, 4, 4, ZYN_PIXEL_RGB8));
    EXPECT_EQ(pass.Out(), target->image());
    EXPECT_EQ(pass.Parameters().GetPointer("output"), target.get());
    EXPECT_EQ(pass.GetImageInfo(true), nullptr);
    EXPECT_EQ(pass.GetImageInfo(false), nullptr);
  }
  EXPECT_TRUE(target->isValid());
  EXPECT_EQ(names(), before);
}

TEST_F(RenderObject, leaves_the_output_alive_after_a_release_too) {
  makeTarget(4, 4, ZYN_PIXEL_RGB8);
  const GLNames before = names();
  {
    RenderObjects::QGLColorCorrection pass(surface.get());
    ASSERT_TRUE(init(pass, 4, 4, ZYN_PIXEL_RGB8));
    pass.Release();
    EXPECT_EQ(pass.Out(), nullptr);
    EXPECT_EQ(pass.Parameters().Count(), 0);
  }
  EXPECT_TRUE(target->isValid());
  EXPECT_EQ(names(), before);
}

TEST_F(RenderObject, deletes_the_target_that_it_made) {
  const GLNames before = names();
  forEachPass(
      [this](QGLRenderObject& pass, uint32_t code) {
        const GLNames without = names();
        const Record image = MakeHeader(4, 4, code);
        ASSERT_TRUE(pass.Init(image.get(), nullptr));
        EXPECT_EQ(names().framebuffers, without.framebuffers + 1);
        EXPECT_EQ(names().textures, without.textures + 1);
        EXPECT_EQ(pass.Parameters().GetPointer("output"), nullptr);
        // A second time it makes a fresh one in its place.
        ASSERT_TRUE(pass.Init(image.get(), nullptr));
        EXPECT_EQ(names().framebuffers, without.framebuffers + 1);
        EXPECT_TRUE(AttachedTexture(pass.Out()));
      },
      surface.get());
  EXPECT_EQ(names(), before);
}

TEST_F(RenderObject, keeps_the_list_and_the_size_of_the_image_as_parameters) {
  makeTarget(4, 3, ZYN_PIXEL_RGB8);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, 4, 3, ZYN_PIXEL_RGB8, {{"size.x", "77"}, {"gamma", "2"}, {"other", "text"}}));
  EXPECT_EQ(pass.Parameters().GetInt("size.x"), 4);
  EXPECT_EQ(pass.Parameters().GetInt("size.y"), 3);
  EXPECT_EQ(pass.Parameters().GetPointer("surface"), surface.get());
  EXPECT_EQ(pass.Parameters().GetString("gamma"), "2");
  EXPECT_EQ(pass.Parameters().GetString("other"), "text");
}
