// The status line and the information text of the controller. Any thread.
#include <mutex>
#include <string>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/display/StatusText.h"
#include "QTD/frame/Text.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

// As `x` of a text with a negative `y`: where the text is placed.
constexpr int kTopLeft = 1;
constexpr int kBottomLeft = 2;
constexpr int kPlaced = -1;

}  // namespace

uint32_t QTDDisplay::UpdateStatus() {
  // Looked at under the lock: a tick must not bring a line back that a command has just switched off.
  std::lock_guard<std::recursive_mutex> guard(viewLock);
  if (parameters.GetInt("display.view.status") == 0) return 0;
  const Prepared expected = PreparedFormat();
  QTD::StatusSource source;
  source.hasFormat = expected.exists;
  source.width = expected.width;
  source.height = expected.height;
  source.imageID = lastImageID;
  source.received = inputRate.Total();
  source.processed = outputRate.Total();
  source.rate = outputRateHistory.Average();
  source.chain = processor ? &processor->Parameters() : nullptr;
  source.screen = Screen();
  QTD::RefreshStatus(statusItems, source);

  QTD::ARGUMENTS args{{"objectID", "@status"},
                      {"text.clr", parameters.GetString("display.overlay.status.clr")},
                      {"text.font", parameters.GetString("display.overlay.status.font")}};
  AddText(QTD::StatusText(statusItems).c_str(), kTopLeft, kPlaced, &args);
  return 1;
}

void QTDDisplay::ShowInfo() {
  std::lock_guard<std::recursive_mutex> guard(viewLock);
  const bool opengl = parameters.GetInt("system.opengl") == 1;
  QTDWindow* window = Window();
  QTD::PROPERTIES items =
      QTD::InfoItems(parameters.GetString("system.objectID"), opengl, window ? window->Surface() : nullptr);
  QTD::ARGUMENTS args{{"objectID", "@info"},
                      {"adjust", QTD::ToText(opengl)},
                      {"text.clr", parameters.GetString("display.overlay.status.clr")},
                      {"text.font", parameters.GetString("display.overlay.status.font")}};
  AddText(QTD::StatusText(items).c_str(), kBottomLeft, kPlaced, &args);
}
