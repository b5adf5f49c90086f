#include "sources/SceneSource.h"

#include <algorithm>
#include <chrono>

#include "ZynPixelFormat.h"
#include "pixels/PixelEncoder.h"
#include "pixels/PixelTable.h"
#include "sources/Pacer.h"
#include "sources/Scene.h"

namespace zynview {

namespace {

constexpr uint32_t kSceneWidth = 1280, kSceneHeight = 960;
constexpr int kSceneFrames = 24;
// A scene of large frames has fewer of them.
constexpr std::size_t kSceneBytes = std::size_t{256} << 20;

uint64_t Now() {
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::system_clock::now().time_since_epoch())
                                   .count());
}

}  // namespace

SceneSource::SceneSource(const Options& options) : rate(options.rate.value_or(kUsualRate)) {
  pixelType = options.pixelType ? options.pixelType : ZYN_PIXEL_RGB8;
  width = options.size.isEmpty() ? kSceneWidth : static_cast<uint32_t>(options.size.width());
  height = options.size.isEmpty() ? kSceneHeight : static_cast<uint32_t>(options.size.height());
}

bool SceneSource::Open(QString* error) {
  if (const uint32_t step = WidthStep(pixelType); width % step != 0) {
    *error = QStringLiteral("lines of %1 end at whole bytes: the width has to be a multiple of %2")
                 .arg(PixelNameOf(pixelType))
                 .arg(step);
    return false;
  }
  const std::size_t frameBytes = std::size_t{LineBytes(pixelType, width)} * height;
  const int count =
      std::clamp(static_cast<int>(kSceneBytes / std::max<std::size_t>(frameBytes, 1)), 1, kSceneFrames);
  const ColourPicture background = DrawBackground(width, height);
  const std::vector<uint8_t> backgroundBytes = EncodePicture(background, pixelType);
  for (int i = 0; i < count; ++i) {
    ColourPicture picture = background;
    const Lines changed = DrawPart(picture, static_cast<double>(i) / count);
    frames.push_back(backgroundBytes);
    EncodeLines(picture, pixelType, changed.first, changed.end, &frames.back());
  }
  return true;
}

ZynImage SceneSource::Format() const {
  return MakeRecord(pixelType, width, height, 0, nullptr);
}

void SceneSource::Run(const Sink& sink) {
  Pacer pacer(rate);
  for (uint64_t id = 1; pacer.Wait([&sink] { return sink(ZynImage{}); }); ++id) {
    ZynImage frame = MakeRecord(pixelType, width, height, 0, frames[(id - 1) % frames.size()].data());
    frame.imageID = id;
    frame.timestamp = Now();
    if (!sink(frame)) return;
  }
}

}  // namespace zynview
