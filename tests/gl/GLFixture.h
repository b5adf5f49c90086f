// A shown window with a ready QGLSurface between `begin` and `end`, and a look at what lies on the card.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QThread>
#include <QWindow>
#include <memory>
#include <ostream>
#include <string>

#include "GLRecords.h"
#include "QTD/frame/Text.h"
#include "gl/image/QGLImage.h"
#include "gl/surface/QGLSurface.h"

constexpr int kGLWindowWidth = 200;
constexpr int kGLWindowHeight = 150;

// How many names of each kind live in the current context.
struct GLNames {
  int textures = 0, framebuffers = 0, renderbuffers = 0, programs = 0, shaders = 0;

  friend bool operator==(const GLNames& a, const GLNames& b) {
    return a.textures == b.textures && a.framebuffers == b.framebuffers &&
           a.renderbuffers == b.renderbuffers && a.programs == b.programs && a.shaders == b.shaders;
  }
  friend std::ostream& operator<<(std::ostream& stream, const GLNames& names) {
    return stream << names.textures << " textures, " << names.framebuffers << " framebuffers, "
                  << names.renderbuffers << " renderbuffers, " << names.programs << " programs, "
                  << names.shaders << " shaders";
  }
};

// A texture's texels, line 0 first, channels next to each other. `bits` is 8 or 16, `channels` 1, 3 or 4.
inline Samples ReadTexture(uint32_t texture, int channels, int bits) {
  glBindTexture(GL_TEXTURE_2D, texture);
  GLint width = 0, height = 0;
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
  glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
  const GLenum format = channels == 1 ? GL_RED : channels == 3 ? GL_RGB : GL_RGBA;
  const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height * channels);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  Samples samples;
  if (bits == 8) {
    std::vector<uint8_t> bytes(count);
    glGetTexImage(GL_TEXTURE_2D, 0, format, GL_UNSIGNED_BYTE, bytes.data());
    samples.assign(bytes.begin(), bytes.end());
  } else {
    std::vector<uint16_t> words(count);
    glGetTexImage(GL_TEXTURE_2D, 0, format, GL_UNSIGNED_SHORT, words.data());
    samples.assign(words.begin(), words.end());
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  return samples;
}

// Waits for a window to be shown; false when that does not happen.
inline bool ShowAndWait(QWindow& window) {
  window.show();
  QElapsedTimer timer;
  for (timer.start(); !window.isExposed() && timer.elapsed() < 10000; QThread::msleep(1)) {
    QCoreApplication::processEvents();
  }
  return window.isExposed();
}

class GLFixture : public testing::Test {
 protected:
  GLFixture() : window(std::make_unique<QWindow>()), surface(std::make_unique<QGLSurface>()) {
    window->setSurfaceType(QSurface::OpenGLSurface);
    window->resize(kGLWindowWidth, kGLWindowHeight);
    list.Set("window", QTD::ToText(static_cast<const void*>(window.get())));
  }

  void SetUp() override {
    ASSERT_TRUE(ShowAndWait(*window)) << "there is no window system";
    ASSERT_TRUE(surface->init(&list)) << "there is no OpenGL";
    ASSERT_TRUE(surface->begin(nullptr));
    while (surface->glGetError() != GL_NO_ERROR) continue;
  }

  void TearDown() override {
    if (surface) surface->end(nullptr, false);
    surface.reset();
  }

  GLNames names() {
    GLNames living;
    for (GLuint name = 1; name <= 2000; ++name) {
      living.textures += surface->glIsTexture(name);
      living.framebuffers += surface->glIsFramebuffer(name);
      living.renderbuffers += surface->glIsRenderbuffer(name);
      living.programs += surface->glIsProgram(name);
      living.shaders += surface->glIsShader(name);
    }
    return living;
  }

  uint32_t glError() { return surface->glGetError(); }

  std::string parameter(const char* key) { return surface->properties.GetString(key); }

  // Parameters that name the surface, as a stage hands them to textures and images.
  QTD::PROPERTIES surfaceList() {
    QTD::PROPERTIES parameters;
    parameters.Set("surface", pointerText(surface.get()));
    return parameters;
  }
  static std::string pointerText(const void* pointer) { return QTD::ToText(pointer); }

  // A target for pictures of that kind.
  std::unique_ptr<QGLImage> made(uint32_t width, uint32_t height, uint32_t code) {
    auto image = std::make_unique<QGLImage>(surface.get());
    const Record record = MakeRecord(width, height, code);
    EXPECT_TRUE(image->init(record.get(), nullptr));
    return image;
  }

  // The samples of an image's record, after they were read back from the card.
  static Samples readBack(QGLImage& image) {
    return image.readGPU(nullptr) ? SamplesOf(*image.image()) : Samples();
  }

  // The texture on the selected unit.
  static GLint bound() {
    GLint name = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &name);
    return name;
  }

  // The window's picture as it will be swapped, upright.
  QImage screenshot() {
    QImage shot(window->width(), window->height(), QImage::Format_RGBA8888);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, shot.width(), shot.height(), GL_RGBA, GL_UNSIGNED_BYTE, shot.bits());
    return shot.mirrored().convertToFormat(QImage::Format_RGB32);
  }

  // The back buffer in one colour, the viewport and the projection the window's.
  void clearWindow(float red = 0, float green = 0, float blue = 0) {
    surface->glViewport(0, 0, window->width(), window->height());
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, window->width(), 0, window->height(), -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    surface->glClearColor(red, green, blue, 1);
    surface->glClear(GL_COLOR_BUFFER_BIT);
  }

  std::unique_ptr<QWindow> window;  // outlives the surface
  std::unique_ptr<QGLSurface> surface;
  QTD::PROPERTIES list;  // of `surface->init`
};
