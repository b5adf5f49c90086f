// Method 2: green by two directions and a local slope, colours as linear functions of green.
#include <algorithm>
#include <array>
#include <memory>

#include "QTD/frame/ParallelSlices.h"
#include "demosaicing/EdgeDirectedTile.h"
#include "demosaicing/Lines.h"
#include "demosaicing/Method.h"

namespace Demosaicing {
namespace {

// A tile looks at 20 lines beside its own, so that high ones save work; small images are shared out all the
// same.
constexpr size_t kLeastTileHeight = 128, kMostTileHeight = 512;
constexpr size_t kTilesWanted = 16;

template <typename Value>
class EdgeDirected : public Method {
 public:
  EdgeDirected(size_t width, size_t height)
      : columns((width + kEdgeTileWidth - 1) / kEdgeTileWidth),
        tileHeight(std::clamp(height * columns / kTilesWanted + 1, kLeastTileHeight, kMostTileHeight)),
        tiles(columns * ((height + tileHeight - 1) / tileHeight)) {
    // Several tiles may come to any of the lanes.
    const size_t lanes = tiles > 1 ? QTD::kMostThreads : 1;
    for (size_t lane = 0; lane < lanes; ++lane) workspaces[lane] = std::make_unique<EdgeWorkspace<Value>>();
  }

  void Run(const Mosaic& mosaic, const Picture& picture) override {
    const bool pastCaches = GoesPastCaches(mosaic);
    QTD::ForSlicesInLanes(tiles, 1, [&](size_t lane, size_t first, size_t end) {
      for (size_t number = first; number < end; ++number) {
        const size_t left = number % columns * kEdgeTileWidth, top = number / columns * tileHeight;
        const EdgeTile tile = {left, std::min(mosaic.width, left + kEdgeTileWidth), top,
                               std::min(mosaic.height, top + tileHeight)};
        InterpolateEdgeTile(mosaic, picture, tile, pastCaches, *workspaces[lane]);
      }
    });
  }

 private:
  size_t columns, tileHeight, tiles;
  std::array<std::unique_ptr<EdgeWorkspace<Value>>, QTD::kMostThreads> workspaces;
};

}  // namespace

std::unique_ptr<Method> MakeEdgeDirected(size_t width, size_t height, uint32_t depth) {
  if (depth == 8) return std::make_unique<EdgeDirected<int16_t>>(width, height);
  return std::make_unique<EdgeDirected<float>>(width, height);
}

}  // namespace Demosaicing
