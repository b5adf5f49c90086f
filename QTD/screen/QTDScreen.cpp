#include "QTD/screen/QTDScreen.h"

#include <algorithm>
#include <mutex>
#include <tuple>
#include <utility>

#include "QTD/frame/CommandProcessor.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/ZoomLadder.h"

using QTD::GuardedDivide;
using QTD::kFitFill;
using QTD::kFitFree;
using QTD::kFitOneToOne;
using QTD::kFitWhole;
using QTD::ToText;

namespace {

// A guard only, that no sizes and no fraction reach: the second round always finds the fractions of the
// first. A picture larger than the window has a gap on one side at most, and the fraction that closes it
// brings the edges together but for a rounding, which is too small to open a gap on the other side: the two
// lengths differ by the last bit of the window's at least. A smaller picture goes to 0.5 and stays there.
constexpr int kMaxRounds = 10;

// Ratios beyond these are nothing that a window system gives.
constexpr double kLeastPixelRatio = 0.01;
constexpr double kMostPixelRatio = 100;

constexpr QTD::Default kDefaults[] = {
    {"screen.min", "60"},     // least length in window pixels of the picture's shorter side
    {"screen.max", "40000"},  // greatest length in window pixels of its longer side
    {"scroll.max", "32000"},  // greatest value that a scroll bar sees
    {"scroll.horz", "1"},     // picture pixels per scroll-bar step
    {"scroll.vert", "1"},     // likewise
    {"fit", "3"},             // a FitMode: one to one
    {"scale", "1.000000"},    // mirror of the field
    {"move.by", "0.100000"},  // share of a window that an arrow key moves
    {"zoom.align", "1"},      // 1: zoom steps follow the ladder; else they multiply by "zoom.coef"
    {"zoom.coef", "1.100000"},
    {"color", "12632256"},  // background of the window, red in the lowest byte
};

// The first and second ";"-separated number of a text; 0.0 where there is none.
QTD::PairD PairOf(const std::string& text) {
  const size_t end = text.find(';');
  const std::string first = text.substr(0, end);
  const std::string second =
      end == std::string::npos ? "" : text.substr(end + 1, text.find(';', end + 1) - end - 1);
  return {QTD::ParseDouble(first), QTD::ParseDouble(second)};
}

// The centre fraction of one axis that closes a gap between the window's edge and a picture that is larger
// than the window; a smaller picture is centred.
double CloseGaps(double fraction, double start, double length, double window, double windowCenter) {
  const bool larger = length > window;
  double closed = fraction;
  if (start > 0) closed = larger ? GuardedDivide(windowCenter, length) : 0.5;
  if (length + start - window < 0) closed = larger ? 1 - GuardedDivide(windowCenter, length) : 0.5;
  return closed;
}

double HeldFraction(double fraction) {
  return fraction > 0 ? std::min(fraction, 1.0) : 0.0;
}

// No scroll bar sees more than `limit`: a longer range is folded. Answers the picture pixels per step.
double Fold(int32_t& range, int32_t& position, int limit) {
  if (range <= limit) return 1.0;
  const double unit = GuardedDivide(range, limit);
  range = limit;
  position = QTD::Round(GuardedDivide(position, unit));
  return unit;
}

}  // namespace

QTDScreen::QTDScreen(QTDSurface* targetSurface) : surface(targetSurface) {
  properties.SetAll(kDefaults);
}

QTDScreen::~QTDScreen() {
  QTDScreen::done(true);
}

bool QTDScreen::init(QTD::CommandProcessor* owner, int width, int height, int fit) {
  perform([&] {
    window = owner;
    setImageSize(width, height);
    setFit(fit, false);
    clear(false);
  });
  return true;
}

bool QTDScreen::done(bool) {
  std::lock_guard<QTD::RMutex> guard(lock);
  imageWidth = 0;
  imageHeight = 0;
  return true;
}

void QTDScreen::clear(bool) {}

void QTDScreen::flush() {}

bool QTDScreen::begin(QTD::PROPERTIES* list) {
  return surface && surface->begin(list);
}

bool QTDScreen::prepare(QTD::PROPERTIES*) {
  return true;
}

void QTDScreen::end(QTD::PROPERTIES* list, bool flush) {
  if (!surface) return;
  surface->end(list, flush);
  if (flush) surface->flush(list);
}

bool QTDScreen::draw(const ZynImage*, QTD::PROPERTIES*) {
  return false;
}

bool QTDScreen::isReady() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return windowWidth > 0;
}

void QTDScreen::setWindowSize(int width, int height) {
  perform([&] {
    QTD::PROPERTIES record;
    savePosition(record);
    if (width > 0 && height > 0) {
      takeSizes([&] {
        const bool changed = width != windowWidth || height != windowHeight;
        windowWidth = width;
        windowHeight = height;
        windowCenterX = width * 0.5;
        windowCenterY = height * 0.5;
        if (surface) surface->resize(width, height);
        return changed;
      });
    }
    notifyChanged(record);
  });
}

void QTDScreen::setImageSize(int width, int height) {
  perform([&] {
    QTD::PROPERTIES record;
    savePosition(record);
    if (width > 0 && height > 0) {
      takeSizes([&] {
        const bool changed = width != imageWidth || height != imageHeight;
        imageWidth = width;
        imageHeight = height;
        return changed;
      });
    }
    notifyChanged(record);
  });
}

// The steps that a new window size and a new image size have in common. `store` tells of a change.
void QTDScreen::takeSizes(const std::function<bool()>& store) {
  const std::optional<QTD::PairD> wanted = std::exchange(initialCenter, std::nullopt);
  const bool changed = store();
  update();
  if (changed) {
    setScale(properties.GetDouble("scale"));
    setFit(properties.GetInt("fit"), false);
  }
  if (!wanted) return;
  std::tie(centerFractionX, centerFractionY) = *wanted;
  if (isReady()) update();
  if (!isReady() || !hasPicture()) initialCenter = wanted;
}

void QTDScreen::setFit(int mode, bool apply) {
  perform([&] {
    const int held = std::clamp<int>(mode, kFitFree, kFitOneToOne);
    properties.Set("fit", ToText(held));
    if (!isReady()) {
      // The window will open on the whole picture, centred, not on what was asked for before.
      if (held == kFitWhole && std::exchange(initialCenter, std::nullopt))
        centerFractionX = centerFractionY = 0.5;
      return;
    }
    QTD::PROPERTIES record;
    if (apply) savePosition(record);
    const double across = GuardedDivide(imageWidth, windowWidth);
    const double down = GuardedDivide(imageHeight, windowHeight);
    switch (held) {
      case kFitWhole:
        centerAt(0.5, 0.5);
        setScale(std::max(down, across));
        break;
      case kFitFill:
        setScale(std::min(down, across));
        break;
      case kFitOneToOne:
        setScale(pixelRatio);
        break;
      default:
        break;
    }
    if (apply) notifyChanged(record);
  });
}

void QTDScreen::setScale(double newScale) {
  perform([&] {
    if (!isReady() || !(newScale >= 0)) return;
    const int least = properties.GetInt("screen.min");
    const int most = properties.GetInt("screen.max");
    const double upper = std::min(GuardedDivide(imageWidth, least), GuardedDivide(imageHeight, least));
    const double lower = std::max(GuardedDivide(imageWidth, most), GuardedDivide(imageHeight, most));
    scale = lower == 0 || upper == 0 ? pixelRatio : QTD::HeldScale(newScale, lower, upper);
    properties.Set("scale", ToText(scale));
    properties.Set("scale.min", ToText(lower));
    properties.Set("scale.max", ToText(upper));
    update();
  });
}

void QTDScreen::setPixelRatio(double ratio) {
  perform([&] {
    if (!(ratio >= kLeastPixelRatio && ratio <= kMostPixelRatio) || ratio == pixelRatio) return;
    pixelRatio = ratio;
    if (!isReady()) return;
    QTD::PROPERTIES record;
    savePosition(record);
    if (properties.GetInt("fit") == kFitOneToOne) setFit(kFitOneToOne, false);
    notifyChanged(record);
  });
}

// Brings the picture's rectangle, the scroll range and the surface in line with the sizes, the scale and the
// centre. True when the centre had to move.
bool QTDScreen::update() {
  std::lock_guard<QTD::RMutex> guard(lock);
  pictureWidth = GuardedDivide(imageWidth, scale);
  pictureHeight = GuardedDivide(imageHeight, scale);
  const bool moved = settle();
  foldScrollRange();
  if (pictureWidth == 0 || pictureHeight == 0 || !surface) return moved;
  surface->setArea({pictureX, pictureY, pictureWidth, pictureHeight});
  // A surface that has this size already may be in the middle of a paint pass: then it is left alone.
  const QTD::SizeI wanted{static_cast<int>(windowWidth), static_cast<int>(windowHeight)};
  const bool same = surface->size.width == wanted.width && surface->size.height == wanted.height;
  if (windowWidth > 0 && !same) surface->resize(wanted.width, wanted.height);
  return moved;
}

// Places the picture so that its centre fraction lies at the window's centre, and moves the fraction until no
// gap is left that a larger picture could fill.
bool QTDScreen::settle() {
  double fx = HeldFraction(centerFractionX);
  double fy = HeldFraction(centerFractionY);
  for (int round = 0; round < kMaxRounds; ++round) {
    pictureX = windowCenterX - pictureWidth * fx;
    pictureY = windowCenterY - pictureHeight * fy;
    fx = CloseGaps(fx, pictureX, pictureWidth, windowWidth, windowCenterX);
    fy = CloseGaps(fy, pictureY, pictureHeight, windowHeight, windowCenterY);
    if (fx == centerFractionX && fy == centerFractionY) return round > 0;
    centerFractionX = fx;
    centerFractionY = fy;
  }
  pictureX = windowCenterX - pictureWidth * fx;
  pictureY = windowCenterY - pictureHeight * fy;
  return true;
}

void QTDScreen::foldScrollRange() {
  const int limit = properties.GetInt("scroll.max");
  scrollRangeX = QTD::Round(pictureWidth - windowWidth);
  scrollRangeY = QTD::Round(pictureHeight - windowHeight);
  scrollPosX = QTD::Round(-pictureX);
  scrollPosY = QTD::Round(-pictureY);
  properties.Set("scroll.vert", ToText(Fold(scrollRangeY, scrollPosY, limit)));
  properties.Set("scroll.horz", ToText(Fold(scrollRangeX, scrollPosX, limit)));
}

void QTDScreen::perform(const std::function<void()>& operation) {
  struct Inside {
    explicit Inside(QTDScreen& entered) : screen(entered) { ++screen.nesting; }
    // What an operation that threw left pending is not told: no later one may tell it for its own.
    ~Inside() {
      if (--screen.nesting == 0) screen.pending = false;
    }
    QTDScreen& screen;
  };
  QTD::CommandProcessor* receiver = nullptr;
  {
    std::lock_guard<QTD::RMutex> guard(lock);
    const Inside inside(*this);
    operation();
    if (nesting == 1 && pending) receiver = window;
  }
  if (receiver) receiver->Execute("view.changed", nullptr);
}

// The view as text, against which `notifyChanged` compares.
void QTDScreen::savePosition(QTD::PROPERTIES& record) {
  const bool ready = isReady();
  record.Set("at", ready ? ToText(centerFractionX) + ";" + ToText(centerFractionY) : "");
  record.Set("scale", ready ? ToText(scale) : "");
}

// The text has six decimals and the fractions are compared exactly: one that has more counts as changed even
// when nothing touched it.
bool QTDScreen::notifyChanged(QTD::PROPERTIES& record) {
  const QTD::PairD at = PairOf(record.GetString("at"));
  const bool sameScale = QTD::IsNearZero(record.GetDouble("scale") - scale);
  if (at == QTD::PairD(centerFractionX, centerFractionY) && sameScale) return false;
  if (notify && window) pending = true;
  return true;
}

double QTDScreen::Scale() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return scale;
}

QTD::PairD QTDScreen::Center() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return {centerFractionX, centerFractionY};
}

QTD::PairI QTDScreen::ScrollPos() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return {scrollPosX, scrollPosY};
}

QTD::PairI QTDScreen::ScrollRange() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return {scrollRangeX, scrollRangeY};
}

QTD::RectD QTDScreen::Picture() {
  std::lock_guard<QTD::RMutex> guard(lock);
  return {pictureX, pictureY, pictureWidth, pictureHeight};
}
