// Where a placed text stands.
#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

#include "QTD/frame/RMutex.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/DrawObjects.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDSurface.h"
#include "QTD/screen/SurfaceText.h"

namespace QTD {

namespace {

enum class Across { kLeft, kCentre, kRight };
enum class Down { kTop, kMiddle, kBottom };

// What a negative view position is taken off a coordinate as: nothing, the view's origin, its far edge, or
// the origin with the text kept on the picture.
enum class Follow { kNothing, kOrigin, kFarEdge, kPictureBottom };

struct Placement {
  int code;
  Across across;
  Down down;
  Follow followX;
  Follow followY;
  bool always;  // follow the view whatever "adjust" says
};

// Code 7 has the correction of a right-hand text, not half of it; code 9 follows always, code 5 never.
constexpr Placement kPlacements[] = {
    {1, Across::kLeft, Down::kTop, Follow::kOrigin, Follow::kOrigin, false},
    {2, Across::kLeft, Down::kBottom, Follow::kOrigin, Follow::kPictureBottom, false},
    {3, Across::kRight, Down::kBottom, Follow::kFarEdge, Follow::kPictureBottom, false},
    {4, Across::kRight, Down::kTop, Follow::kFarEdge, Follow::kOrigin, false},
    {5, Across::kCentre, Down::kMiddle, Follow::kNothing, Follow::kNothing, false},
    {7, Across::kCentre, Down::kBottom, Follow::kFarEdge, Follow::kPictureBottom, false},
    {9, Across::kCentre, Down::kTop, Follow::kOrigin, Follow::kOrigin, true},
};

constexpr int kMarginX = 4;
constexpr int kMarginY = 2;

struct View {
  int64_t x, y, width, height;
};

int Held(int64_t value) {
  return static_cast<int>(
      std::clamp<int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// Whole blocks of 8 by 2 pixels, so that a changing value does not make its text jitter.
SizeI WholeBlocks(SizeI text) {
  const int width = Round((static_cast<double>(text.width) + 7) * 0.125);
  const int height = Round((static_cast<double>(text.height) + 1) * 0.5);
  return {Held(static_cast<int64_t>(width) * 8), Held(static_cast<int64_t>(height) * 2)};
}

int64_t StartAcross(Across across, int64_t room, int64_t width) {
  switch (across) {
    case Across::kLeft:
      return kMarginX;
    case Across::kCentre:
      return (room - width) / 2;
    case Across::kRight:
      break;
  }
  return room - width - kMarginX;
}

// Before the height is taken off.
int64_t StartDown(Down down, int64_t room, int64_t height) {
  switch (down) {
    case Down::kTop:
      return height + kMarginY;
    case Down::kMiddle:
      return (room - height) / 2;
    case Down::kBottom:
      break;
  }
  return room - kMarginY;
}

int64_t FollowView(int64_t value, Follow follow, int64_t origin, int64_t length, int64_t pictureBottom) {
  if (origin >= 0) return value;
  switch (follow) {
    case Follow::kNothing:
      break;
    case Follow::kOrigin:
      return value - origin;
    case Follow::kFarEdge:
      return value - (origin + length);
    case Follow::kPictureBottom:
      return value > pictureBottom ? pictureBottom - origin : value;
  }
  return value;
}

}  // namespace

// An object whose attributes cannot be read stays where it is: placing runs inside of window events.
void DrawObjects::place(PROPERTIES* object, bool) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  const auto drawGuard = SpinLock(drawLock);
  const auto tryLayout = [this](PROPERTIES& one) {
    try {
      layout(&one, nullptr, nullptr);
    } catch (const std::exception&) {
    }
  };
  if (object) return tryLayout(*object);
  for (auto& entry : objects) tryLayout(entry.second);
}

bool DrawObjects::layout(PROPERTIES* object, int* x, int* y) {
  if (!object) return false;
  std::lock_guard<std::recursive_mutex> guard(lock);
  const auto drawGuard = SpinLock(drawLock);
  const int code = object->GetInt("placement", "-1");
  SurfaceText* engine = surface ? surface->Text() : nullptr;
  if (object->GetString("type") == "text" && code >= 0 && engine) {
    const std::string font = object->GetString("text.font", defaults.GetString("text.font"));
    const std::string text = expanded(object->GetString("text"));
    SizeI measured;
    engine->measure(font.c_str(), text.c_str(), &measured.width, &measured.height);
    const SizeI blocks = WholeBlocks(measured);
    object->Set("w", ToText(blocks.width));
    object->Set("h", ToText(blocks.height));

    int64_t left = 0;
    int64_t bottom = 0;
    const auto* row = std::find_if(std::begin(kPlacements), std::end(kPlacements),
                                   [code](const Placement& candidate) { return candidate.code == code; });
    if (row == std::end(kPlacements)) {
      left = object->GetInt("x");
      bottom = object->GetInt("y");
    } else {
      left = StartAcross(row->across, viewWidth, blocks.width);
      bottom = StartDown(row->down, viewHeight, blocks.height);
      if (row->always || object->GetBool("adjust")) {
        const RectD area = surface->Area();
        const int64_t pictureBottom =
            Held(static_cast<int64_t>(std::clamp(area.y + area.height - 2, -1e15, 1e15)));
        left = FollowView(left, row->followX, viewX, viewWidth, 0);
        bottom = FollowView(bottom, row->followY, viewY, viewHeight, pictureBottom);
      }
    }
    object->Set("x", ToText(Held(left)));
    object->Set("y", ToText(Held(bottom - blocks.height)));
  }
  if (x) *x = object->GetInt("x");
  if (y) *y = object->GetInt("y");
  return true;
}

// The parser reads the record under the variable "image", so both locks are held: see `setImage`.
std::string DrawObjects::expanded(const std::string& text) {
  return parser ? parser->Parse(text.c_str()) : text;
}

}  // namespace QTD
