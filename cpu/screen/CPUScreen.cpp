#include "cpu/screen/CPUScreen.h"

#include <cmath>
#include <stdexcept>

#include "QTD/screen/ColorValue.h"

namespace {

constexpr int kWholeSurface = -1;
constexpr int kMidGrey = 128;
constexpr uint32_t kDefaultBackground = 0xC0C0C0;

}  // namespace

CPUScreen::CPUScreen(QTDSurface* targetSurface) : QTDScreen(targetSurface) {}

CPUScreen::~CPUScreen() = default;

bool CPUScreen::init(QTD::CommandProcessor* owner, int width, int height, int fit) {
  return QTDScreen::init(owner, width, height, fit);
}

bool CPUScreen::done(bool takeLock) {
  QTDScreen::done(takeLock);
  return true;
}

void CPUScreen::clear(bool) {
  if (!surface) return;
  const ColorValue grey(kMidGrey, kMidGrey, kMidGrey, 256);
  surface->fill(kWholeSurface, kWholeSurface, kWholeSurface, kWholeSurface, &grey);
}

void CPUScreen::flush() {
  if (surface) surface->flush(nullptr);
}

bool CPUScreen::draw(const ZynImage* image, QTD::PROPERTIES*) {
  if (!surface) return false;
  const ColorValue color = background();
  surface->fill(kWholeSurface, kWholeSurface, kWholeSurface, kWholeSurface, &color);
  if (!image) return true;
  QTD::RectD target = Picture();
  target.width = std::fabs(target.width);
  target.height = std::fabs(target.height);
  const QTD::RectD source{0, 0, static_cast<double>(image->width), static_cast<double>(image->height)};
  surface->image(image, &target, &source);
  return true;
}

ColorValue CPUScreen::background() {
  try {
    return ColorValue(static_cast<uint32_t>(properties.GetInt64("color")));
  } catch (const std::logic_error&) {  // a host's text without a number must not end the painting
    return ColorValue(kDefaultBackground);
  }
}
