// What a QGLSurface draws, in the fixed pipeline.
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "QTD/screen/Numbers.h"
#include "QTD/screen/SurfaceText.h"
#include "gl/image/QGLImage.h"
#include "gl/surface/QGLSurface.h"

using QTD::Round;

namespace {

// Coordinates of a record or a texture that lies over the whole viewport.
void UnitsOf(double width, double height) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, width, 0, height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

// Texture corners (x, y) to (x + width, y + height) over vertices (0, 0) to (right, top).
void DrawQuad(const QTD::RectD& corners, double right, double top) {
  const double x2 = corners.x + corners.width;
  const double y2 = corners.y + corners.height;
  glBegin(GL_QUADS);
  glTexCoord2d(corners.x, corners.y);
  glVertex2d(0, 0);
  glTexCoord2d(x2, corners.y);
  glVertex2d(right, 0);
  glTexCoord2d(x2, y2);
  glVertex2d(right, top);
  glTexCoord2d(corners.x, y2);
  glVertex2d(0, top);
  glEnd();
}

void SetColor(const ColorValue& color) {
  glColor3f(static_cast<float>(color.redPart), static_cast<float>(color.greenPart),
            static_cast<float>(color.bluePart));
}

bool IsSmooth(QTD::PROPERTIES& properties) {
  try {
    return properties.GetBool("smoothing", "0");
  } catch (const std::logic_error&) {  // a host's text without a number must not end the painting
    return false;
  }
}

int Plus(int a, int b) {
  return Round(static_cast<double>(a) + b);  // held in the range of int
}

}  // namespace

int QGLSurface::toGLX(int x) {
  return std::max(Round(toAreaX(x)), 0);
}

double QGLSurface::toGLY(int y) {
  const double height = Round(Area().height);
  return std::min(height, height - toAreaY(y));
}

void QGLSurface::text(const char* string, int x, int y, const char* font, const ColorValue* color) {
  lastError = 1;
  if (!isActive()) return;
  glBindTexture(GL_TEXTURE_2D, 0);
  if (!surfaceText) return;
  surfaceText->draw(string, toGLX(x), Round(std::trunc(toGLY(y))), font, color);
  if (surfaceText->getStatus() == 0) lastError = 0;
}

void QGLSurface::polyline(const Points& points, const ColorValue* color, int width, int) {
  if (!isActive()) return;
  glBindTexture(GL_TEXTURE_2D, 0);
  glPushAttrib(GL_LINE_BIT | GL_CURRENT_BIT);
  // Lines, like the viewport, count in device pixels.
  glLineWidth(static_cast<float>(std::max(width, 1) * pixelRatio()));
  if (!points.empty()) {
    glBegin(GL_LINES);
    if (color) SetColor(*color);
    for (size_t i = 1; i < points.size(); ++i) {
      glVertex2d(toGLX(points[i - 1].first), toGLY(points[i - 1].second));
      glVertex2d(toGLX(points[i].first), toGLY(points[i].second));
    }
    glEnd();
  }
  glPopAttrib();
}

// The base clears its mark that something was drawn; here the last error is that mark.
void QGLSurface::line(int x1, int y1, int x2, int y2, const ColorValue* color, int width, int style) {
  lastError = 0;
  QTDSurface::line(x1, y1, x2, y2, color, width, style);
}

void QGLSurface::rect(int x, int y, int w, int h, const ColorValue* color, int width, int style) {
  const int right = Plus(x, w);
  const int bottom = Plus(y, h);
  polyline({{x, y}, {right, y}, {right, bottom}, {x, bottom}, {x, y}}, color, width, style);
}

void QGLSurface::fill(int x, int y, int w, int h, const ColorValue* color) {
  if (!isActive()) return;
  const double left = toGLX(x == -1 ? 0 : x);
  const double top = toGLY(y == -1 ? 0 : y);
  const double right = left + (w == -1 ? size.width : w);
  const double bottom = top - (h == -1 ? size.height : h);
  glPushAttrib(GL_CURRENT_BIT);
  glBindTexture(GL_TEXTURE_2D, 0);
  SetColor(color ? *color : defaults["fill"]);
  glBegin(GL_POLYGON);
  glVertex2d(left, top);
  glVertex2d(right, top);
  glVertex2d(right, bottom);
  glVertex2d(left, bottom);
  glEnd();
  glPopAttrib();
}

void QGLSurface::image(const ZynImage* picture, const QTD::RectD* target, const QTD::RectD* source) {
  QGLImage* const attached = AttachedImage(picture);
  const GLint filter = IsSmooth(properties) ? GL_LINEAR : GL_NEAREST;
  // On another context the same name is another texture.
  const uint32_t texture = attached && attached->Context() == context ? attached->texture() : 0;
  if (texture == 0 || !isActive()) return;

  glEnable(GL_TEXTURE_2D);
  glActiveTexture(GL_TEXTURE0);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);

  // The viewport counts in device pixels.
  const QTD::RectD to =
      target ? *target : QTD::RectD{0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
  const double ratio = pixelRatio();
  glViewport(Round(to.x * ratio), Round(to.y * ratio), Round(to.width * ratio), Round(to.height * ratio));
  UnitsOf(picture->width, picture->height);

  QTD::RectD from = source ? *source : QTD::RectD{0, 0, 1, 1};
  const bool programmed = attached->useProgram(false, nullptr) != 0;
  if (!programmed) from = {from.x, from.y + from.height, from.width, -from.height};
  DrawQuad(from, picture->width, picture->height);

  checkError("QGLSurface::image", 1, 0);
  glBindTexture(GL_TEXTURE_2D, 0);
  if (programmed) attached->releaseProgram();
  glFlush();
}

void QGLSurface::renderTexture(int width, int height) {
  if (width < 1 || height < 1 || !isActive()) return;
  UnitsOf(width, height);
  DrawQuad({0, 0, 1, 1}, width, height);
  checkError("QGLSurface::renderTexture", 1, 0);
}
