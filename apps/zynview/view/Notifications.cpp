#include "view/Notifications.h"

#include <cstdlib>
#include <cstring>

#include "view/Commands.h"

namespace zynview {

namespace {

// Bits of "cmd.display.view.nofication": the view, the mouse's movements, its buttons.
constexpr int kView = 1, kMovements = 2, kButtons = 4;

std::string Value(const QTD::ARGUMENTS& args, const char* name) {
  const auto found = args.find(name);
  return found == args.end() ? std::string() : found->second;
}

}  // namespace

Notifications::Notifications()
    : moved(std::make_unique<GuiCall>([this] { HandMoveOver(); })), clicked(std::make_unique<GuiCall>([this] {
        if (onRightClick) onRightClick();
      })) {}

void Notifications::Join(ZynDisplayProcessor* target) {
  display = target;
  Run(display, "cmd.system.notification.add", {{"proc", PointerText(static_cast<ZynDisplayCommand*>(this))}});
  display->GetComponent()->SetParameterInt("image.notification.flags.set", 1);
}

void Notifications::AskForMovements() {
  Run(display, "cmd.display.view.nofication", {{"flags", std::to_string(kView | kMovements | kButtons)}});
}

// When the command is back, no call to this object is under way, and none comes; what was handed over before
// goes with the two.
void Notifications::Leave() {
  if (!display) return;
  Run(display, "cmd.system.notification.del", {{"proc", PointerText(static_cast<ZynDisplayCommand*>(this))}});
  display = nullptr;
  moved.reset();
  clicked.reset();
}

// Never takes a click away from the display: the answer is 0.
uint32_t Notifications::RunCommand(const char* name, QTD::ARGUMENTS* args) {
  if (!name || !args) return 0;
  if (std::strcmp(name, "notification.image") == 0) {
    const int result = std::atoi(Value(*args, "result").c_str());
    ++(result == 0 ? shown : failed);
    if (result != 0) lastResult = result;
  }
  if (std::strcmp(name, "notification.mouse") == 0) HearMouse(*args);
  return 0;
}

void Notifications::HearMouse(const QTD::ARGUMENTS& args) {
  const std::string code = Value(args, "code");
  if (code == "mouse.down" && Value(args, "left") == "0") clicked->Ask();
  if (code != "mouse.move") return;
  const std::lock_guard<std::mutex> guard(lock);
  x = std::atoi(Value(args, "win.x").c_str());
  y = std::atoi(Value(args, "win.y").c_str());
  // A busy GUI thread hears of the last place only.
  if (moveIsQueued) return;
  moveIsQueued = true;
  moved->Ask();
}

void Notifications::HandMoveOver() {
  int atX = 0, atY = 0;
  {
    const std::lock_guard<std::mutex> guard(lock);
    moveIsQueued = false;
    atX = x;
    atY = y;
  }
  if (onMove) onMove(atX, atY);
}

}  // namespace zynview
