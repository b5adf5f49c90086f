// Load and unload of the library.
#include "QTD/frame/Logging.h"

namespace {

struct Module {
  Module() {
    QTD::InitLogging();
    QTD::LogCategory().info("DisplayQt: -> Enter");
  }
  ~Module() { QTD::ShutdownLogging(); }
};

const Module module;

}  // namespace
