#include "view/Overlays.h"

#include <algorithm>
#include <string>

#include "view/Commands.h"

namespace zynview {

namespace {

constexpr const char kFrame[] = "zynview.frame", kLabel[] = "zynview.label", kAcross[] = "zynview.across",
                     kDown[] = "zynview.down";
// Red in the lowest byte.
constexpr uint32_t kColour = 0xFFFF00;
constexpr int kArms = 12;  // of the region's smaller side
constexpr int kInset = 4;  // image pixels from the frame to the label
constexpr char kText[] = "${viewer.source}   frame ${image.id:%u}   ${image.dims:%u x %u}";

}  // namespace

void Overlays::Start(const ZynImage& format, const QString& name, const QRect& wanted) {
  Hide();
  const QRect picture(0, 0, static_cast<int>(format.width), static_cast<int>(format.height));
  region = wanted.intersected(picture);
  const int left = picture.width() / 4, top = picture.height() / 4;
  if (region.isEmpty()) region = picture.adjusted(left, top, -left, -top);
  QTD::ARGUMENTS variables{{"viewer.source", name.toStdString()}};
  Run(display, "cmd.display.overlay.params", {{"vars", PointerText(&variables)}});
}

bool Overlays::Show() {
  // An arm is one image pixel wide and goes through the pixel at the centre.
  const int arm = std::min(region.width(), region.height()) / kArms;
  const int x = region.x() + region.width() / 2, y = region.y() + region.height() / 2;
  shown = DrawImageRect(display, kFrame, region, 2, kColour) &&
          DrawImageRect(display, kAcross, {x - arm, y, 2 * arm + 1, 1}, 1, kColour) &&
          DrawImageRect(display, kDown, {x, y - arm, 1, 2 * arm + 1}, 1, kColour) &&
          AddLabel(region.topLeft());
  if (!shown) Hide();
  return shown;
}

void Overlays::Hide() {
  for (const char* id : {kFrame, kLabel, kAcross, kDown}) {
    Run(display, "cmd.display.overlay.del", {{"objectID", id}});
  }
  shown = false;
}

bool Overlays::AddLabel(const QPoint& place) {
  return Run(display, "cmd.display.overlay.text.add",
             {{"objectID", kLabel},
              {"cs", "img"},
              {"text.pos.x", std::to_string(place.x() + kInset)},
              {"text.pos.y", std::to_string(place.y() + kInset)},
              {"text.text", kText},
              {"text.font", "medium"},
              {"text.clr", std::to_string(kColour)}});
}

}  // namespace zynview
