// How close the interpolation methods come to photographs: 8 bits, red at the first place, peak signal to
// noise over all samples of the three channels, four pixels of border left out, mean over the pictures of a
// set.
//
// The pictures lie in photos/ of the folder that the environment variable ZYN_TEST_DATA names, or of
// ../shared/data seen from the working directory or one of its parents: "kodim" ones are those of the set
// that papers use, the other ones are free pictures.
#include <benchmark/benchmark.h>

#include <QImage>
#include <QString>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "ZynDemosaicing.h"
#include "ZynPixelFormat.h"

namespace {

namespace fs = std::filesystem;

constexpr uint32_t kBorder = 4;

fs::path PhotoFolder() {
  if (const char* const folder = std::getenv("ZYN_TEST_DATA")) return fs::path(folder) / "photos";
  std::error_code ignored;
  for (fs::path base = fs::current_path(ignored); !base.empty(); base = base.parent_path()) {
    const fs::path photos = base / "../shared/data/photos";
    if (fs::exists(photos, ignored) || base == base.root_path()) return photos;
  }
  return {};
}

template <typename Sample>
ZynImage Image(uint32_t pixelType, std::vector<Sample>& bytes, uint32_t width, uint32_t height) {
  ZynImage image{};
  image.structSize = sizeof image;
  image.pixelType = pixelType;
  image.width = width;
  image.height = height;
  image.linePitch = static_cast<uint32_t>(bytes.size() / height);
  image.imageSize = static_cast<uint32_t>(bytes.size());
  image.imageData = bytes.data();
  return image;
}

// In dB; nothing when the file is no picture or the component fails.
std::optional<double> Quality(ZynBayer& component, const fs::path& file) {
  const QImage photo = QImage(QString::fromStdString(file.string())).convertToFormat(QImage::Format_RGB888);
  if (photo.isNull()) return std::nullopt;
  const auto width = static_cast<uint32_t>(photo.width()), height = static_cast<uint32_t>(photo.height());
  const auto sample = [&](uint32_t x, uint32_t y, uint32_t channel) {
    return photo.constScanLine(static_cast<int>(y))[3 * x + channel];
  };
  std::vector<uint8_t> mosaic(size_t{width} * height), picture(3 * mosaic.size());
  for (uint32_t y = 0; y < height; ++y) {
    // R G over G B: the channel is the number of odd coordinates.
    for (uint32_t x = 0; x < width; ++x) mosaic[size_t{y} * width + x] = sample(x, y, x % 2 + y % 2);
  }
  const ZynImage source = Image(ZYN_PIXEL_BAYERRG8, mosaic, width, height);
  ZynImage output = Image(ZYN_PIXEL_RGB8, picture, width, height);
  if (component.Init(&source, &output) != 0 || component.ProcessImage(&source, &output) != 0)
    return std::nullopt;

  double squares = 0, count = 0;
  for (uint32_t y = kBorder; y + kBorder < height; ++y) {
    for (uint32_t x = kBorder; x + kBorder < width; ++x) {
      for (uint32_t channel = 0; channel < 3; ++channel, ++count) {
        const double error =
            double(picture[(size_t{y} * width + x) * 3 + channel]) - double(sample(x, y, channel));
        squares += error * error;
      }
    }
  }
  return 10 * std::log10(255 * 255 * count / squares);
}

void DemosaicQuality(benchmark::State& state, int64_t method) {
  std::vector<fs::path> files;
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(PhotoFolder(), ignored)) {
    if (entry.path().extension() == ".png") files.push_back(entry.path());
  }
  if (files.empty()) {
    state.SkipWithError("there are no photographs");
    return;
  }
  ZynBayer* const component = ZynBayer::CreateComponent();
  component->GetComponent()->SetParameterInt("BayerAlgType", method);
  double sums[2] = {}, counts[2] = {};
  for (auto _ : state) {
    for (const fs::path& file : files) {
      const std::optional<double> quality = Quality(*component, file);
      if (!quality) {
        state.SkipWithError(file.c_str());
        break;
      }
      const bool isFree = file.filename().string().rfind("kodim", 0) != 0;
      sums[isFree ? 1 : 0] += *quality;
      ++counts[isFree ? 1 : 0];
    }
  }
  ZynBayer::DeleteComponent(component);
  if (counts[0] > 0) state.counters["psnr_kodak"] = sums[0] / counts[0];
  if (counts[1] > 0) state.counters["psnr_free"] = sums[1] / counts[1];
}

}  // namespace

#define ZYN_QUALITY(number) \
  BENCHMARK_CAPTURE(DemosaicQuality, method##number, number)->Iterations(1)->Unit(benchmark::kMillisecond)
ZYN_QUALITY(0);
ZYN_QUALITY(1);
ZYN_QUALITY(2);
ZYN_QUALITY(3);
