#include "QTD/stages/OverlayStage.h"

#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Text.h"
#include "ZynDisplay.h"

namespace QTD {
namespace {

// How a new object is drawn, where the command does not say.
constexpr Default kTextStyle[] = {{"text.font", "default"}, {"text.clr", "0"}};
constexpr Default kRectStyle[] = {{"line.width", "1"}, {"line.clr", "0"}};
// What "params.apply" makes the defaults of the store.
constexpr Default kApplied[] = {
    {"text.pos.x", "0"}, {"text.pos.y", "0"}, {"text.clr", "0"}, {"text.font", "default"}};

enum class Action { kNone, kAddText, kAddRect, kDelete };

// `RunCommand` knows these names with "cmd." before them.
struct Command {
  const char* name;
  Action action;
};

constexpr Command kCommands[] = {
    {"text.add", Action::kAddText}, {"rect.add", Action::kAddRect}, {"del", Action::kDelete},
    {"text.del", Action::kDelete},  {"rect.del", Action::kDelete},  // neither looks at the object's kind
};

Action FindAction(const std::string& name) {
  for (const Command& command : kCommands) {
    if (name == command.name) return command.action;
  }
  return Action::kNone;
}

// The values of a style: the command's, else the stage's own, else the default.
template <size_t kCount>
void TakeStyle(const Default (&style)[kCount], ArgumentView& values, PROPERTIES& parameters,
               PROPERTIES& list) {
  for (const Default& entry : style) {
    list.Set(entry.name, values.GetString(entry.name, parameters.GetString(entry.name, entry.value)));
  }
}

std::string IdOf(PROPERTIES* properties) {
  return properties ? properties->GetString("objectID") : std::string();
}

}  // namespace

// Objects.

// Where an attribute can't be read, there is no object.
template <typename Interface>
std::string OverlayStage<Interface>::AddText(const char* text, int x, int y, PROPERTIES* properties) {
  try {
    std::string id = IdOf(properties);
    const bool added =
        y >= 0 ? store.setText(id, x, y, text, properties) : store.setPlacedText(id, x, text, properties);
    return added && text ? id : std::string();
  } catch (...) {
    return {};
  }
}

template <typename Interface>
std::string OverlayStage<Interface>::AddRect(int x, int y, int width, int height, PROPERTIES* properties) {
  try {
    std::string id = IdOf(properties);
    const RectI rect{x, y, width, height};
    return store.setRect(id, &rect, properties) ? id : std::string();
  } catch (...) {
    return {};
  }
}

template <typename Interface>
bool OverlayStage<Interface>::DeleteObject(const std::string& id) {
  return store.remove(id);
}

template <typename Interface>
bool OverlayStage<Interface>::SetDefaults(PROPERTIES* properties) {
  if (!properties) return false;
  store.Defaults().Merge(properties);
  return true;
}

// "image" stays the store's: templates follow it as a pointer.
template <typename Interface>
bool OverlayStage<Interface>::SetTextVariables(PROPERTIES* properties) {
  TextParser* const parser = store.Parser();
  if (!properties || !parser) return false;
  PROPERTIES given(*properties), taken;
  for (int n = 0; n < given.Count(); ++n) {
    const std::string key = given.NameAt(n);
    if (key != "image") taken.Set(key, given.GetString(key));
  }
  parser->variables.Merge(&taken);
  return true;
}

// Commands.

template <typename Interface>
std::string OverlayStage<Interface>::AddTextFrom(ARGUMENTS& values) {
  ArgumentView view(&values);
  PROPERTIES list;
  TakeStyle(kTextStyle, view, parameters, list);
  list.Set("objectID", view.GetString("objectID"));
  const int x = view.GetInt("text.pos.x", "0");
  const int y = view.GetInt("text.pos.y", "0");
  return AddText(view.GetString("text.text").c_str(), x, y, &list);
}

template <typename Interface>
std::string OverlayStage<Interface>::AddRectFrom(ARGUMENTS& values) {
  ArgumentView view(&values);
  PROPERTIES list;
  TakeStyle(kRectStyle, view, parameters, list);
  list.Set("objectID", view.GetString("objectID"));
  const int x = view.GetInt("rect.x", "0");
  const int y = view.GetInt("rect.y", "0");
  const int width = view.GetInt("rect.w", "0");
  return AddRect(x, y, width, view.GetInt("rect.h", "0"), &list);
}

// Where a place is no number, there is no object.
template <typename Interface>
std::string OverlayStage<Interface>::AddFrom(bool text, ARGUMENTS& values) {
  try {
    return text ? AddTextFrom(values) : AddRectFrom(values);
  } catch (...) {
    return {};
  }
}

template <typename Interface>
uint32_t OverlayStage<Interface>::RunCommand(const char* command, ARGUMENTS* args) {
  const std::string wanted = command ? command : "";
  const std::string prefix = "cmd.";
  if (!args || wanted.compare(0, prefix.size(), prefix) != 0) return 0;
  const Action action = FindAction(wanted.substr(prefix.size()));
  if (action == Action::kNone) return 0;
  if (action == Action::kDelete) return DeleteObject(ArgumentView(args).GetString("objectID")) ? 1 : 0;
  const std::string id = AddFrom(action == Action::kAddText, *args);
  (*args)["objectID"] = id;
  return id.empty() ? 0 : 1;
}

template <typename Interface>
uint32_t OverlayStage<Interface>::ExecuteCommand(const char* command) {
  const std::string wanted = command ? command : "";
  const RMutexLock guard(lock);
  if (wanted == "params.apply") {
    return Finish(this->CodeOf([&] { return ApplyParameters() ? 0u : uint32_t{ZYN_ERR_FAILED}; }));
  }
  if (wanted == "params.reset") return Finish(ready ? 0u : uint32_t{ZYN_ERR_FAILED});
  const Action action = FindAction(wanted);
  if (action == Action::kNone) return ComponentImpl::ExecuteCommand(command);
  if (action == Action::kDelete) {
    return Finish(DeleteObject(parameters.GetString("objectID")) ? 0u : uint32_t{ZYN_ERR_FAILED});
  }
  ARGUMENTS values;
  parameters.ExportArguments(values);
  const std::string id = AddFrom(action == Action::kAddText, values);
  parameters.Set("objectID", id);
  return Finish(id.empty() ? uint32_t{ZYN_ERR_FAILED} : 0u);
}

template <typename Interface>
bool OverlayStage<Interface>::ApplyParameters() {
  PROPERTIES list;
  for (const Default& entry : kApplied) list.Set(entry.name, parameters.GetString(entry.name, entry.value));
  this->Enable(parameters.GetInt("enabled", "0") != 0);
  return SetDefaults(&list);
}

template class OverlayStage<ZynDisplayCPU::ImageOverlay>;
template class OverlayStage<ZynDisplayQGL::ImageOverlay>;

}  // namespace QTD
