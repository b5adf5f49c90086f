// Painting the objects of a store.
#include <algorithm>
#include <exception>
#include <limits>

#include "QTD/frame/RMutex.h"
#include "QTD/screen/DrawObjects.h"
#include "QTD/screen/QTDSurface.h"

namespace QTD {

namespace {

constexpr int kModeBlend = 1;  // how text lies on a memory image: its edges are blended

bool SameWord(const std::string& text, const char* word) {
  const auto lower = [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  };
  const std::string other = word;
  return text.size() == other.size() &&
         std::equal(text.begin(), text.end(), other.begin(), [&](char a, char b) { return lower(a) == b; });
}

int Held(int64_t value) {
  return static_cast<int>(
      std::clamp<int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int BandLevel(int mode) {
  switch (mode) {
    case 1:
      return 255;
    case 2:
      return 0;
    default:
      return 128;
  }
}

int DepthOf(PROPERTIES* list) {
  try {
    return list ? list->GetInt("color.depth", "8") : 8;
  } catch (const std::exception&) {
    return 8;
  }
}

// The band behind a text. It lies above "y", which names the top of the text, and it is 4 wider than the text
// even where its left edge was held; both are kept.
void FillBand(QTDSurface& target, PROPERTIES& object, int x, int y, int mode) {
  const int width = object.GetInt("w");
  const int height = object.GetInt("h");
  const int level = BandLevel(mode);
  const ColorValue grey(level, level, level);
  const int64_t left = std::max<int64_t>(static_cast<int64_t>(x) - 2, 0);
  target.fill(Held(left), Held(static_cast<int64_t>(y) - height), Held(static_cast<int64_t>(width) + 4),
              height, &grey);
}

}  // namespace

void DrawObjects::draw(QTDSurface* target, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  const auto drawGuard = SpinLock(drawLock);
  QTDSurface* used = target ? target : surface;
  if (!used || objects.empty()) return;
  const int depth = DepthOf(list);
  for (const auto& entry : objects) {
    try {
      drawObject(*used, entry.second, depth);
    } catch (const std::exception&) {
      // An object whose attributes cannot be read is passed over: nothing may be thrown out of a paint event.
    }
  }
}

// "line", "marker", "circle" and unknown types are kept in the store but never painted.
void DrawObjects::drawObject(QTDSurface& target, const PROPERTIES& stored, int depth) {
  PROPERTIES object(stored);
  const std::string type = object.GetString("type");
  PROPERTIES merged(defaults);
  merged.Merge(&object);
  if (SameWord(type, "rect")) {
    const ColorValue line = colorAt(merged.GetInt64("line.clr"), depth);
    const int width = merged.GetInt("line.width");
    target.rect(object.GetInt("x"), object.GetInt("y"), object.GetInt("w"), object.GetInt("h"), &line, width,
                0);
  } else if (SameWord(type, "text")) {
    const ColorValue ink = colorAt(merged.GetInt64("text.clr"), depth);
    const int x = object.GetInt("x");
    const int y = object.GetInt("y");
    const int mode = merged.GetInt("back.mode");
    if (mode != 0) FillBand(target, object, x, y, mode);
    const std::string text = expanded(object.GetString("text"));
    target.text(text.c_str(), x, y, merged.GetString("text.font").c_str(), &ink);
  }
}

ColorValue DrawObjects::colorAt(int64_t number, int depth) const {
  ColorValue result = ColorValue(static_cast<uint32_t>(number & 0xFFFFFF)).AtDepth(depth);
  if (mono != 0) result = result.Grey();
  result.mode = kModeBlend;
  return result;
}

}  // namespace QTD
