// The operations behind the view and overlay commands. Any thread; the view lock serialises them.
#include <cmath>
#include <mutex>
#include <string>

#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

using Guard = std::lock_guard<std::recursive_mutex>;

// Below this a zoom coefficient counts as not given.
constexpr double kLeastCoefficient = 1e-05;

}  // namespace

// Overlays need a picture on the screen; `viewLock` or `handlerLock` is held.
bool QTDDisplay::HasPicture() const {
  return CanProcess();
}

bool QTDDisplay::SetOverlayProperties(QTD::ARGUMENTS* args) {
  Guard guard(viewLock);
  if (!HasPicture() || !args) return false;
  Window()->Objects().Defaults().ImportArguments(*args);
  return true;
}

bool QTDDisplay::SetOverlayVariables(QTD::ARGUMENTS* args) {
  Guard guard(viewLock);
  if (!HasPicture() || !args) return false;
  QTD::TextParser* parser = Window()->Objects().Parser();
  if (!parser) return false;
  QTD::PROPERTIES list;
  for (const auto& [name, value] : *args) {
    // That name belongs to the window, which keeps the picture's address under it.
    if (name != "image") list.Set(name, value);
  }
  parser->variables.Merge(&list);
  return true;
}

std::string QTDDisplay::AddText(const char* text, int x, int y, QTD::ARGUMENTS* args) {
  Guard guard(viewLock);
  if (!HasPicture() || !text || !*text) return {};
  QTD::PROPERTIES list;
  if (args) list.ImportArguments(*args);
  const std::string id = Window()->overlayText(list.GetString("objectID").c_str(), text, x, y, &list);
  if (!id.empty()) viewer->redraw();
  return id;
}

std::string QTDDisplay::AddRect(int x, int y, int width, int height, QTD::ARGUMENTS* args) {
  Guard guard(viewLock);
  if (!HasPicture()) return {};
  QTD::PROPERTIES list;
  if (args) list.ImportArguments(*args);
  const std::string id =
      Window()->overlayRect(list.GetString("objectID").c_str(), x, y, width, height, &list);
  if (!id.empty()) viewer->redraw();
  return id;
}

bool QTDDisplay::DeleteObject(const std::string& id) {
  Guard guard(viewLock);
  return HasPicture() && RemoveObject(id);
}

// Asks for no picture: a line that is switched off goes also after a failed image.
bool QTDDisplay::RemoveObject(const std::string& id) {
  Guard guard(viewLock);
  QTDWindow* window = Window();
  if (!window || !window->Objects().remove(id)) return false;
  viewer->redraw();
  return true;
}

bool QTDDisplay::Zoom(bool zoomIn, double coefficient, bool refresh) {
  Guard guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen) return false;
  if (coefficient < kLeastCoefficient) coefficient = parameters.GetDouble("display.view.zoom.coef", "1.1");
  const bool zoomed = screen->zoom(zoomIn, coefficient, false);
  if (zoomed && refresh) viewer->redraw();
  return zoomed;
}

bool QTDDisplay::CanZoom(bool zoomIn, double coefficient) {
  Guard guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen) return false;
  if (coefficient < kLeastCoefficient) coefficient = parameters.GetDouble("display.view.zoom.coef", "1.1");
  return screen->zoom(zoomIn, coefficient, true);
}

bool QTDDisplay::SetFit(int mode, bool refresh) {
  Guard guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen) return false;
  screen->setFit(mode, false);
  if (refresh) viewer->redraw();
  return true;
}

// False also when the screen held the scale at a limit.
bool QTDDisplay::SetScale(double scale, bool refresh) {
  Guard guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen) return false;
  screen->setScale(scale);
  const bool taken = std::fabs(screen->Scale() - scale) < QTD::kNearZero;
  if (taken && refresh) viewer->redraw();
  return taken;
}

bool QTDDisplay::SetCenter(double fractionX, double fractionY, bool refresh) {
  Guard guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen || !screen->isReady()) return false;
  screen->setCenter(fractionX, fractionY);
  if (refresh) viewer->redraw();
  return true;
}
