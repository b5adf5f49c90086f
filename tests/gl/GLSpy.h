// A look into the table of functions through which a surface reaches the driver, and entries put in their
// place for a while.
#pragma once

#include <QOpenGLFunctions>
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

// The table is shared by all that was resolved on one context.
struct FunctionTable : QOpenGLFunctions {
  static auto& of(QOpenGLFunctions& functions) { return (functions.*&FunctionTable::d_ptr)->f; }
};

// Puts `stand` into a slot of the table until the end of the scope.
template <typename Function>
class Swapped {
 public:
  Swapped(Function& usedSlot, Function stand) : slot(usedSlot), before(usedSlot) { slot = stand; }
  ~Swapped() { slot = before; }
  Swapped(const Swapped&) = delete;
  Swapped& operator=(const Swapped&) = delete;

 private:
  Function& slot;
  Function before;
};

// What the fixed pipeline would draw, as a driver in feedback mode tells it: window coordinates and colours.
struct Drawn {
  struct Vertex {
    float x, y, red, green, blue;
  };
  std::vector<Vertex> lines;     // two for each segment
  std::vector<Vertex> polygons;  // those of all polygons, which a driver may cut into triangles

  // The distinct vertices of the polygons, to the sixteenth of a pixel, in the order of x and then y.
  std::vector<std::pair<float, float>> corners() const {
    const auto held = [](float value) { return std::round(value * 16) / 16; };
    std::vector<std::pair<float, float>> points;
    for (const Vertex& vertex : polygons) points.emplace_back(held(vertex.x), held(vertex.y));
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
  }
};

template <typename Draw>
Drawn FeedbackOf(Draw&& draw) {
  std::vector<GLfloat> buffer(4096);
  glFeedbackBuffer(static_cast<GLsizei>(buffer.size()), GL_3D_COLOR, buffer.data());
  glRenderMode(GL_FEEDBACK);
  draw();
  const GLint count = glRenderMode(GL_RENDER);
  Drawn drawn;
  const auto vertex = [&](size_t at) {
    return Drawn::Vertex{buffer[at], buffer[at + 1], buffer[at + 3], buffer[at + 4], buffer[at + 5]};
  };
  constexpr size_t kValues = 7;  // x, y, z, red, green, blue, alpha
  for (size_t at = 0; at < static_cast<size_t>(count);) {
    const auto token = static_cast<GLenum>(buffer[at++]);
    size_t vertices = 2;
    auto* into = &drawn.lines;
    if (token == GL_POLYGON_TOKEN) {
      vertices = static_cast<size_t>(buffer[at++]);
      into = &drawn.polygons;
    } else if (token != GL_LINE_TOKEN && token != GL_LINE_RESET_TOKEN) {
      break;
    }
    for (size_t i = 0; i < vertices; ++i, at += kValues) into->push_back(vertex(at));
  }
  return drawn;
}
