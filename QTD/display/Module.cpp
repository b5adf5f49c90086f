// Load and unload of the library.
#include "QTD/frame/Logging.h"

namespace {

struct Module {
  Module() {
    try {
      QTD::InitLogging();
      QTD::LogCategory().info("DisplayQt: -> Enter");
    } catch (...) {
      // The host's program starts in any case; the trace stays off.
    }
  }
  ~Module() { QTD::ShutdownLogging(); }
};

const Module module;

}  // namespace
