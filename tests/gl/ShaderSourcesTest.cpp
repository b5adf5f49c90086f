#include "gl/passes/ShaderSources.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ShaderSources, holds_the_shaders_of_all_passes) {
  for (const char* name : {"image.v.glsl", "image.f.glsl", "bayer.mmhc.v.glsl", "bayer.mmhc.f.glsl",
                           "corr.color.v.glsl", "corr.color.f.glsl", "unpack.u3v.v.glsl", "unpack.u3v.f.glsl",
                           "coloration.v.glsl", "coloration.f.glsl"}) {
    const char* const text = FindShaderSource(name);
    ASSERT_NE(text, nullptr) << name;
    const std::string wanted = name[std::string(name).size() - 6] == 'v' ? "gl_Position" : "gl_FragColor";
    EXPECT_NE(std::string(text).find(wanted), std::string::npos) << name;
  }
}

TEST(ShaderSources, knows_no_other_name) {
  for (const char* name : {"", "image", "image.v", "IMAGE.V.GLSL", "image.v.glsl ", "other.v.glsl"})
    EXPECT_EQ(FindShaderSource(name), nullptr) << name;
  EXPECT_EQ(FindShaderSource(nullptr), nullptr);
}

}  // namespace
