// Method 3: green by two directions with slopes that are found locally, red and blue as locally fitted
// functions of green with their rests interpolated along edges.
//
// The frame is that of residual interpolation: D. Kiku, Y. Monno, M. Tanaka, M. Okutomi: "Residual
// interpolation for color image demosaicking", ICIP 2013, and "Minimized-Laplacian residual interpolation for
// color image demosaicking", SPIE 2014. The mixture of four sides comes from I. Pekkucuksen, Y. Altunbasak:
// "Gradient based threshold free color filter array interpolation", ICIP 2010; to mix slope 1 and the fitted
// one by what they explain is in the spirit of Y. Monno, D. Kiku, M. Tanaka, M. Okutomi: "Adaptive residual
// interpolation for color and multispectral image demosaicking", Sensors 2017. The closed form of the slope
// is our own.
#include <algorithm>
#include <array>
#include <memory>

#include "QTD/frame/ParallelSlices.h"
#include "demosaicing/BestBand.h"

namespace Demosaicing {
namespace {

// Lines of a band. A band needs 20 lines more at each end; more lines leave too few bands for the threads of
// a small picture.
constexpr size_t kFewestLines = 128, kMostLines = 768;
constexpr size_t kBandsWanted = 2 * QTD::kMostThreads;

class Best : public Method {
 public:
  Best(size_t width, size_t height)
      // One column and one line more: red may lie at 1.
      : columns((width + kBandWidth) / kBandWidth),
        bandLines(std::clamp((height * columns + kBandsWanted - 1) / kBandsWanted, kFewestLines, kMostLines)),
        bands(columns * ((height + bandLines) / bandLines)) {
    // A single band is done in lane 0; of a few bands any lane may get one.
    const size_t lanes = bands == 1 ? 1 : workspaces.size();
    for (size_t lane = 0; lane < lanes; ++lane) workspaces[lane] = std::make_unique<BestWorkspace>();
  }

  void Run(const Mosaic& mosaic, const Picture& picture) override {
    const size_t right = mosaic.width + mosaic.redX, bottom = mosaic.height + mosaic.redY;
    QTD::ForSlicesInLanes(bands, 1, [&](size_t lane, size_t firstBand, size_t endBand) {
      for (size_t number = firstBand; number < endBand; ++number) {
        const size_t left = number % columns * kBandWidth, top = number / columns * bandLines;
        // The first line may lie above the picture, the last band behind it.
        const size_t from = std::max(top, mosaic.redY), to = std::min(bottom, top + bandLines);
        const size_t end = std::min(right, left + kBandWidth);
        if (from >= to || std::max(left, mosaic.redX) >= end) continue;
        InterpolateBestBand(mosaic, picture,
                            {static_cast<ptrdiff_t>(left), static_cast<ptrdiff_t>(end),
                             static_cast<ptrdiff_t>(from), static_cast<ptrdiff_t>(to)},
                            *workspaces[lane]);
      }
    });
  }

 private:
  static constexpr auto kBandWidth = static_cast<size_t>(kBestBandWidth);

  const size_t columns, bandLines, bands;
  std::array<std::unique_ptr<BestWorkspace>, QTD::kMostThreads> workspaces;
};

}  // namespace

std::unique_ptr<Method> MakeBest(size_t width, size_t height, uint32_t) {
  return std::make_unique<Best>(width, height);
}

}  // namespace Demosaicing
