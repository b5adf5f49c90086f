// What the overlay stages of both variants have in common: the objects, and the commands that make and remove
// them.
#pragma once

#include <cstdint>
#include <string>

#include "QTD/screen/DrawObjects.h"
#include "QTD/stages/Stage.h"
#include "ZynImgProcessor.h"

namespace QTD {

// Parameters, the arguments of `ExecuteCommand`: "objectID", "text.text", "text.pos.x", "text.pos.y",
// "text.clr", "text.font", "rect.x", "rect.y", "rect.w", "rect.h", "line.clr", "line.width", "enabled".
//
// Any thread may call any operation. Commands do not wait for a run, but for the drawing in it.
template <typename Interface>
class OverlayStage : public Stage<Interface> {
 public:
  uint32_t ExecuteCommand(const char* command) override;
  uint32_t RunCommand(const char* command, ARGUMENTS* args) override;
  bool SetDefaults(PROPERTIES* properties) override;
  bool SetTextVariables(PROPERTIES* properties) override;
  std::string AddText(const char* text, int x, int y, PROPERTIES* properties) override;
  bool DeleteObject(const std::string& id) override;
  std::string AddRect(int x, int y, int width, int height, PROPERTIES* properties) override;

 protected:
  using Stage<Interface>::Stage;
  using Stage<Interface>::Finish;
  using Stage<Interface>::lock;
  using Stage<Interface>::parameters;
  using Stage<Interface>::ready;

  DrawObjects store;  // has locks of its own, behind `lock`

 private:
  // The commands; `values` are the arguments of the caller, or the stage's own parameters.
  std::string AddFrom(bool text, ARGUMENTS& values);
  std::string AddTextFrom(ARGUMENTS& values);
  std::string AddRectFrom(ARGUMENTS& values);
  bool ApplyParameters();
};

}  // namespace QTD
