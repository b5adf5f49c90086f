// Objects over the window: how they come in, and how they follow the picture.
#include <QString>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/window/QTDWindow.h"

using QTD::PROPERTIES;
using QTD::Round;
using QTD::ToText;

namespace {

constexpr const char* kWindowSystem = "win";

// The system of an object's position; none means the window.
std::string SystemOf(PROPERTIES& object) {
  const std::string system = object.GetString("cs", kWindowSystem);
  return system.empty() ? kWindowSystem : system;
}

bool IsWindowSystem(const std::string& system) {
  return qstricmp(system.c_str(), kWindowSystem) == 0;
}

struct Place {
  double x = 0, y = 0, w = 0, h = 0;
};

void ToWindow(QTDScreen& screen, const std::string& system, double* x, double* y) {
  screen.transform(x, y, system.c_str(), kWindowSystem, true, false);
}

// Position and size in window pixels. The size takes up what rounding takes from the position, so that the
// far edge stays where it is.
void ToWindow(QTDScreen& screen, const std::string& system, Place& place) {
  ToWindow(screen, system, &place.x, &place.y);
  screen.transform(&place.w, &place.h, system.c_str(), kWindowSystem, false, true);
  place.w += place.x - Round(place.x);
  place.h += place.y - Round(place.y);
}

class Storing {
 public:
  explicit Storing(QTD::ViewTracker& viewTracker) : tracker(viewTracker) { tracker.BeginStore(); }
  ~Storing() { tracker.EndStore(); }
  Storing(const Storing&) = delete;
  Storing& operator=(const Storing&) = delete;

 private:
  QTD::ViewTracker& tracker;
};

// A pass over the objects; one that is not ended, because something could not be read, leaves nothing to
// trust.
class Moving {
 public:
  explicit Moving(QTD::ViewTracker& viewTracker) : tracker(viewTracker) { tracker.BeginPass(); }
  ~Moving() {
    if (!ended) tracker.Abandon();
  }
  Moving(const Moving&) = delete;
  Moving& operator=(const Moving&) = delete;
  void End(const QTD::ViewState& seen) {
    ended = true;
    tracker.EndPass(seen);
  }

 private:
  QTD::ViewTracker& tracker;
  bool ended = false;
};

}  // namespace

std::string QTDWindow::overlayText(const char* id, const char* text, int x, int y, PROPERTIES* properties) {
  if (!text || !*text) return std::string();
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  const Storing storing(tracker);
  PROPERTIES list;
  if (properties) list.Merge(properties);
  list.Set("x.cs", ToText(x));
  list.Set("y.cs", ToText(y));
  std::string identifier = list.GetString("objectID");
  if (identifier.empty() && id) identifier = id;

  const std::string system = SystemOf(list);
  if (y < 0) {
    drawObjects.setPlacedText(identifier, x, text, &list);
  } else if (IsWindowSystem(system) || !screen) {
    drawObjects.setText(identifier, x, y, text, &list);
  } else {
    double windowX = x;
    double windowY = y;
    ToWindow(*screen, system, &windowX, &windowY);
    list.Set("x", ToText(Round(windowX)));
    list.Set("y", ToText(Round(windowY)));
    drawObjects.setText(identifier, Round(windowX), Round(windowY), text, &list);
  }
  return identifier;
}

std::string QTDWindow::overlayRect(const char* id, int x, int y, int w, int h, PROPERTIES* properties) {
  std::lock_guard<std::recursive_mutex> painting(renderLock);
  const Storing storing(tracker);
  PROPERTIES list;
  if (properties) list.Merge(properties);
  const std::string system = SystemOf(list);
  list.Set("cs", system);
  list.Set("x.cs", ToText(x));
  list.Set("y.cs", ToText(y));
  list.Set("w.cs", ToText(w));
  list.Set("h.cs", ToText(h));

  QTD::RectI rect{x, y, w, h};
  if (!IsWindowSystem(system) && screen) {
    Place place{static_cast<double>(x), static_cast<double>(y), static_cast<double>(w),
                static_cast<double>(h)};
    ToWindow(*screen, system, place);
    if (list.GetBool("adjust", "0")) {
      QTD::PairD point{place.x, place.y};
      QTD::PairD size{place.w, place.h};
      screen->clampPoint(&point, &size);
      place = {point.first, point.second, size.first, size.second};
    }
    rect = {Round(place.x), Round(place.y), Round(place.w), Round(place.h)};
  }

  const bool repaint = list.GetInt("update", "0") != 0;  // before anything is stored: it may not be a number
  std::string identifier = id ? id : "";
  if (identifier.empty()) identifier = list.GetString("objectID");
  drawObjects.setRect(identifier, &rect, &list);
  if (repaint) update();
  return identifier;
}

QTD::ViewState QTDWindow::currentView() {
  QTD::ViewState state;
  if (!screen) return state;
  state.picture = screen->Picture();
  state.scale = screen->Scale();
  state.position = screen->ScrollPos();
  state.range = screen->ScrollRange();
  state.page = screen->scrollPage();
  state.hasImage = hasImage();
  return state;
}

void QTDWindow::followView() {
  {
    const std::lock_guard<std::recursive_mutex> hold(renderLock);
    if (!screen || tracker.IsCurrent(currentView())) return;
    moveObjects(Moved::kBoundToPicture);
  }
  syncScrollBars(kBothBars);
}

// Works on copies: the store's locks are not held while the screen is asked. What comes of it goes into
// objects that are still there, and which nobody stores anew meanwhile.
void QTDWindow::moveObjects(Moved which) {
  const std::lock_guard<std::recursive_mutex> hold(renderLock);
  if (!screen) return;
  Moving pass(tracker);
  const QTD::ViewState seen = currentView();
  for (const std::string& id : drawObjects.ids()) {
    PROPERTIES object;
    if (!drawObjects.get(id, &object)) continue;
    try {
      if (which == Moved::kAll || !IsWindowSystem(SystemOf(object))) moveObject(id, object);
    } catch (const std::exception&) {
      // An attribute that cannot be read: the object stays where it is.
    }
  }
  pass.End(seen);
}

void QTDWindow::moveObject(const std::string& id, PROPERTIES& object) {
  PROPERTIES moved;
  const std::string system = SystemOf(object);
  if (!IsWindowSystem(system)) {
    Place place{object.GetDouble("x.cs"), object.GetDouble("y.cs"), object.GetDouble("w.cs"),
                object.GetDouble("h.cs")};
    const bool hasSize = !QTD::IsNearZero(place.w);
    if (hasSize) {
      ToWindow(*screen, system, place);
      moved.Set("w", ToText(Round(place.w)));
      moved.Set("h", ToText(Round(place.h)));
    } else {
      ToWindow(*screen, system, &place.x, &place.y);
    }
    moved.Set("x", ToText(Round(place.x)));
    moved.Set("y", ToText(Round(place.y)));
  }
  const int placement = object.GetInt("placement", "-1");
  if (placement == 0) {
    // Code 0 keeps its own position and is not laid out again.
    if (moved.Count() > 0) drawObjects.merge(id, &moved);
  } else if (moved.Count() > 0 || placement > 0) {
    drawObjects.update(id, &moved);
  }
}
