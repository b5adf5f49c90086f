// Load and unload of the library.
#include "QTD/frame/Logging.h"

namespace {

struct Module {
  Module() {
    try {
      QTD::InitLogging();
      QTD::TraceInfo("DisplayQt: -> Enter");
    } catch (...) {
      // The host's program starts in any case; the trace stays off.
    }
  }
  ~Module() {
    try {
      QTD::ShutdownLogging();
    } catch (...) {
      // No memory for the exit line: nothing may leave a destructor.
    }
  }
};

const Module module;

}  // namespace
