// What a stage does around a pass: an input texture on unit 0, a target, `Init` with both, `Render`.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

#include <string>

#include "GLFixture.h"
#include "ZynPixelFormat.h"
#include "gl/passes/QGLRenderObject.h"

// Pairs of parameters.
using PassList = std::initializer_list<std::pair<const char*, std::string>>;

class PassFixture : public GLFixture {
 protected:
  void TearDown() override {
    if (!textures.empty()) surface->glDeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
    textures.clear();
    target.reset();
    EXPECT_EQ(glError(), static_cast<uint32_t>(GL_NO_ERROR));
    GLFixture::TearDown();
  }

  // A texture as a stage makes one: nearest texel, GL_CLAMP; 1 or 3 channels of 8 or 16 bits. It stays bound
  // to unit 0.
  uint32_t upload(int width, int height, int channels, int bits, const Samples& samples) {
    GLuint name = 0;
    surface->glGenTextures(1, &name);
    textures.push_back(name);
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, name);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    surface->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    surface->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const GLenum format = channels == 1 ? GL_RED : GL_RGB;
    if (bits == 8) {
      const std::vector<uint8_t> bytes(samples.begin(), samples.end());
      surface->glTexImage2D(GL_TEXTURE_2D, 0, channels == 1 ? GL_R8 : GL_RGB8, width, height, 0, format,
                            GL_UNSIGNED_BYTE, bytes.data());
    } else {
      const std::vector<uint16_t> words(samples.begin(), samples.end());
      surface->glTexImage2D(GL_TEXTURE_2D, 0, channels == 1 ? GL_R16 : GL_RGB16, width, height, 0, format,
                            GL_UNSIGNED_SHORT, words.data());
    }
    return name;
  }

  // The target of the next passes, which they get as "output".
  void makeTarget(int width, int height, uint32_t code) {
    QTD::PROPERTIES parameters;
    parameters.Set("size.x", QTD::ToText(width));
    parameters.Set("size.y", QTD::ToText(height));
    parameters.Set("pixeltype", QTD::ToText(code));
    target = std::make_unique<QGLImage>(surface.get());
    ASSERT_TRUE(target->init(nullptr, &parameters));
  }

  // Runs `Init` for an image of that kind, with the target as "output".
  bool init(QTD::RenderObject& pass, int width, int height, uint32_t code, const PassList& more = {}) {
    source = MakeHeader(width, height, code);
    QTD::PROPERTIES parameters;
    parameters.Set("output", pointerText(target.get()));
    for (const auto& [name, value] : more) parameters.Set(name, value);
    return pass.Init(source.get(), &parameters);
  }

  // Runs the pass on the texture and gives the target's texels, 1 or 3 channels of 8 or 16 bits.
  Samples render(QTD::RenderObject& pass, uint32_t texture, int channels, int bits,
                 QTD::PROPERTIES* arguments = nullptr) {
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, texture);
    EXPECT_TRUE(pass.Render(source.get(), arguments));
    surface->glActiveTexture(GL_TEXTURE0);
    return ReadTexture(target->texture(), channels, bits);
  }

  static Record MakeHeader(int width, int height, uint32_t code) {
    return Record(QTD::ImageCreateHeader(nullptr, static_cast<uint32_t>(width), height, code));
  }

  Record source;  // of the last `init`
  std::unique_ptr<QGLImage> target;

 private:
  std::vector<GLuint> textures;
};
