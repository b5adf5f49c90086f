#include "gl/screen/QGLScreen.h"

#include <GL/gl.h>

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <algorithm>
#include <cmath>
#include <mutex>
#include <stdexcept>

#include "QTD/frame/RMutex.h"
#include "QTD/screen/ColorValue.h"
#include "QTD/screen/Numbers.h"
#include "gl/surface/QGLSurface.h"

using QTD::GuardedDivide;
using QTD::Round;

namespace {

constexpr int kWholeSurface = -1;
constexpr uint32_t kDefaultBackground = 0xC0C0C0;
constexpr int kUnknownLimit = 1024;  // where the surface tells none

// Null while the surface's context is not current: then there is nothing to paint on, and a context of the
// host's is none of ours.
QOpenGLFunctions* Functions(QTDSurface* surface) {
  const auto* const own = dynamic_cast<const QGLSurface*>(surface);
  return own && own->isActive() ? QOpenGLContext::currentContext()->functions() : nullptr;
}

// Lower-left corner of a rectangle that is given by its upper-left one.
QTD::RectD Upward(const QTD::RectD& rect, double windowHeight) {
  return {rect.x, windowHeight - rect.y - rect.height, rect.width, rect.height};
}

}  // namespace

QGLScreen::QGLScreen(QTDSurface* targetSurface) : QTDScreen(targetSurface) {}

QGLScreen::~QGLScreen() = default;

bool QGLScreen::init(QTD::CommandProcessor* owner, int width, int height, int fit) {
  return QTDScreen::init(owner, width, height, fit);
}

bool QGLScreen::done(bool takeLock) {
  QTDScreen::done(takeLock);
  return true;
}

void QGLScreen::clear(bool flush) {
  if (!surface) return;
  if (QOpenGLFunctions* const gl = Functions(surface)) {
    const ColorValue color = background();
    gl->glClearColor(static_cast<float>(color.redPart), static_cast<float>(color.greenPart),
                     static_cast<float>(color.bluePart), 0);
    gl->glClear(GL_COLOR_BUFFER_BIT);
  }
  if (flush) surface->flush(nullptr);
}

void QGLScreen::flush() {
  if (surface) surface->flush(nullptr);
}

bool QGLScreen::begin(QTD::PROPERTIES* list) {
  passes.push_back(false);
  if (!isReady()) return false;
  try {
    passes.back() = surface->begin(list);
    return prepare(list);
  } catch (...) {  // no pass was begun, so nobody ends it
    leave(list, false);
    throw;
  }
}

// The picture's rectangle becomes the viewport. One that is too large for a viewport is held at the limit in
// its own proportions, and the surface's area follows.
bool QGLScreen::prepare(QTD::PROPERTIES*) {
  if (!surface) return false;
  const QTD::RMutexLock guard(lock);  // a view that changes meanwhile sets the area after this
  const View now = view();
  const double limit = viewportLimit(now.ratio);
  const double width = now.picture.width, height = now.picture.height;
  QTD::RectD port = Upward(now.picture, now.windowHeight);
  if (std::trunc(width + QTD::kNearZero) > limit || std::trunc(height + QTD::kNearZero) > limit) {
    if (width <= height) {
      port.height = limit;
      port.width = limit * GuardedDivide(width, height);
    } else {
      port.width = limit;
      port.height = limit * GuardedDivide(height, width);
    }
    port.x = now.windowCenterX - port.height / 2;  // the height in both: a wide picture's lies off the centre
    port.y = now.windowCenterY - port.height / 2;
    surface->setArea(port);
  }
  QOpenGLFunctions* const gl = Functions(surface);
  if (!gl) return true;
  gl->glViewport(Round(port.x * now.ratio), Round(port.y * now.ratio), Round(port.width * now.ratio),
                 Round(port.height * now.ratio));
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  // A side of less than half a pixel has no viewport to be seen in, and a projection of none is an error.
  glOrtho(0, std::max(Round(port.width), 1), 0, std::max(Round(port.height), 1), -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  return true;
}

void QGLScreen::end(QTD::PROPERTIES* list, bool flush) {
  if (!surface) return;
  try {
    if (flush) surface->flush(list);  // while the context is still current
  } catch (...) {
    leave(list, flush);
    throw;
  }
  leave(list, flush);
}

// The innermost pass. Another one that is under way on the surface goes on.
void QGLScreen::leave(QTD::PROPERTIES* list, bool flush) {
  if (passes.empty()) return;
  const bool begun = passes.back();
  passes.pop_back();
  if (begun) surface->end(list, flush);
}

bool QGLScreen::draw(const ZynImage* image, QTD::PROPERTIES*) {
  if (!surface) return false;
  const ColorValue color = background();
  surface->fill(kWholeSurface, kWholeSurface, kWholeSurface, kWholeSurface, &color);
  if (!image) return true;

  const View now = view();
  const double limit = viewportLimit(now.ratio);
  const QTD::RectD& picture = now.picture;
  QTD::RectD target = Upward(picture, now.windowHeight);
  QTD::RectD source{0, 0, 1, 1};
  if (picture.width > limit || picture.height > limit) {
    // The part that lies in the window, in fractions of the picture from its lower-left corner.
    source.x = std::fabs(GuardedDivide(picture.x, picture.width));
    source.y = 1 - std::fabs(GuardedDivide(picture.y - now.windowHeight, picture.height));
    source.width = GuardedDivide(now.windowWidth, picture.width);
    source.height = GuardedDivide(now.windowHeight, picture.height);
    target = {0, 0, now.windowWidth, now.windowHeight};
    if (source.height > 1) {  // lower than the window
      target.y = -(picture.height * source.y);
      target.height = picture.height;
      source.y = 0;
      source.height = 1;
    }
    if (source.width > 1) {  // narrower
      target.x = picture.x;
      target.width = picture.width;
      source.x = 0;
      source.width = 1;
    }
  }
  surface->image(image, &target, &source);
  return true;
}

bool QGLScreen::isReady() {
  const std::lock_guard<QTD::RMutex> guard(lock);
  return windowWidth != 0 && surface;
}

QGLScreen::View QGLScreen::view() {
  const std::lock_guard<QTD::RMutex> guard(lock);
  return {{pictureX, pictureY, pictureWidth, pictureHeight},
          windowWidth,
          windowHeight,
          windowCenterX,
          windowCenterY,
          pixelRatio};
}

double QGLScreen::viewportLimit(double ratio) {
  int limit = 0;
  try {
    limit = surface->properties.GetInt("gl.viewport");
  } catch (const std::logic_error&) {  // no number: as if the driver had told none
  }
  return (limit > 0 ? limit : kUnknownLimit) / ratio;
}

ColorValue QGLScreen::background() {
  try {
    return ColorValue(static_cast<uint32_t>(properties.GetInt64("color")));
  } catch (const std::logic_error&) {  // a host's text without a number must not end the painting
    return ColorValue(kDefaultBackground);
  }
}
