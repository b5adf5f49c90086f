// What the host holds: a thin component in front of the controller.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QTD/frame/ComponentImpl.h"
#include "ZynDisplay.h"

class QTDDisplay;

// Forwards images to the controller, turns the host's parameter names and short commands into the
// controller's, and passes mouse notifications on to a native window of the host. Any thread, but for
// creation and deletion.
class ZynDisplayImpl : public ZynDisplay, public QTD::ComponentImpl, public ZynDisplayCommand {
 public:
  ZynDisplayImpl();
  ~ZynDisplayImpl() override;

  // ZynDisplay
  ZynComponent* GetComponent() override;
  bool IsReserved() override;
  uint32_t Initialize(void* parent, const char* mode, const ZynImage* format) override;
  uint32_t Initialize(const ZynImage* format, const char* mode) override;
  uint32_t DisplayVideo(const ZynImage* image) override;
  uint32_t DisplayImage(const ZynImage* image) override;
  uint32_t ConvertImage(const ZynImage* input, ZynImage* output) override;
  uint32_t TranslatePosition(uint32_t* x, uint32_t* y, int direction) override;
  virtual void Shutdown();

  // QTD::ComponentImpl and ZynDisplayCommand
  uint32_t CallParameterHandler(bool isSet, const char* name, const std::string& value) override;
  uint32_t ExecuteCommand(const char* name) override;
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override;

  QTDDisplay* Controller() const { return controller.get(); }
  static std::vector<std::string> CommandNames();  // of `ExecuteCommand`

 private:
  struct ShortCommands;  // the table of their names

  uint32_t SetParameterByCommand(QTD::ARGUMENTS& args);
  uint32_t ForwardMouse(QTD::ARGUMENTS& args);
  uint32_t ExecuteTextAdd();
  uint32_t ExecuteTextDelete();
  uint32_t ExecuteZoomIn();
  uint32_t ExecuteZoomOut();
  uint32_t ExecuteAtCenter();
  uint32_t ExecuteDumpOn();
  uint32_t ExecuteDumpOff();
  uint32_t RunControllerCommand(const char* command, QTD::ARGUMENTS* args);

  std::unique_ptr<QTDDisplay> controller;
};
