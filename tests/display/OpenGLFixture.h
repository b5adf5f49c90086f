// A display on the card, in a real window.
#pragma once

#include <QImage>
#include <QScreen>
#include <string>

#include "QTD/chain/QTDProcessor.h"
#include "gl/surface/QGLSurface.h"
#include "tests/display/PictureFixture.h"

namespace display_test {

class OpenGLDisplay : public PictureTest {
 protected:
  void SetVariant(bool opengl) { display->SetParameterInt("system.opengl", opengl); }

  // Initialises on the card for a picture and shows it.
  void ShowOnCard(const HostImage& picture) {
    SetVariant(true);
    Start(picture);
    ASSERT_TRUE(display->Viewer() && Window()) << "there is no OpenGL";
    ASSERT_TRUE(WaitFor([&] { return Window()->isExposed() && Screen()->isReady(); }));
    ShowNext(picture);
  }
  void ShowNext(const HostImage& picture) {
    const std::size_t before = receiver.Images();
    ASSERT_EQ(display->DisplayVideo(&picture.record), 0u);
    ASSERT_TRUE(WaitForImages(before + 1));
    ASSERT_EQ(receiver.LastResult(), "0");
    Settle(120);  // swaps are 31 ms apart
  }
  QImage Grab() { return Window()->QWindow::screen()->grabWindow(Window()->winId()).toImage(); }
  QGLSurface* Surface() { return dynamic_cast<QGLSurface*>(Window()->Surface()); }

  std::string StageNames() {
    auto* const chain = dynamic_cast<QTDProcessor*>(display->GetProcessor());
    std::string names;
    for (int index = 0; chain && index < chain->GetProcessorCount(); ++index)
      names += std::string(chain->Stages().NameAt(index)) + " ";
    return names;
  }

  // How many names of each kind live in the display's context.
  std::string Names() {
    QGLSurface& gl = *Surface();
    if (!gl.begin(nullptr)) return "no context";
    int textures = 0, framebuffers = 0, renderbuffers = 0, programs = 0;
    for (GLuint name = 1; name <= 3000; ++name) {
      textures += gl.glIsTexture(name);
      framebuffers += gl.glIsFramebuffer(name);
      renderbuffers += gl.glIsRenderbuffer(name);
      programs += gl.glIsProgram(name);
    }
    gl.end(nullptr, false);
    return QTD::ToText(textures) + " " + QTD::ToText(framebuffers) + " " + QTD::ToText(renderbuffers) + " " +
           QTD::ToText(programs);
  }
};

// Red above, blue below.
inline void FillHalves(HostImage& picture) {
  const uint32_t width = picture.record.width, height = picture.record.height;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      uint8_t* const pixel = picture.pixels.data() + y * picture.record.linePitch + 3 * x;
      pixel[y < height / 2 ? 0 : 2] = 250;
    }
  }
}

inline void ExpectHalves(const QImage& seen) {
  const int x = seen.width() / 2, y = seen.height() / 2;
  EXPECT_EQ(seen.pixel(x, y - 15), qRgb(250, 0, 0));
  EXPECT_EQ(seen.pixel(x, y + 15), qRgb(0, 0, 250));
}

}  // namespace display_test
