#include "demosaicing/EdgeDirectedTile.h"

// Everything up to HWY_AFTER_NAMESPACE is compiled once for each instruction set; the one that the processor
// has is chosen at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "demosaicing/EdgeDirectedTile.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "demosaicing/EdgeDirectedSamples-inl.h"
#include "demosaicing/EdgeDirectedVectors-inl.h"

// All lines of the picture are kept as half lines of coloured sites c (red or blue, one of them in each line)
// and greens g. `shift` is 0 where the line's sites stand at even places and 1 where at odd ones:
//
//   shift 0   c0 g0 c1 g1 c2 g2      around site i: greens i - 1 + shift and i + shift
//   shift 1   g0 c0 g1 c1 g2 c2      around green i: sites i - shift and i + 1 - shift
//   shift 0   c0 g0 c1 g1 c2 g2      above and below: the same index, of the other kind
//
// Diagonal neighbours of a site are sites of the other colour, with the indices of its green neighbours.
//
// The results must not depend on the instruction set: plain additions, multiplications and divisions in the
// order of their writing, no fused ones.
HWY_BEFORE_NAMESPACE();
namespace Demosaicing {
namespace HWY_NAMESPACE {
namespace {

// The steps of a tile. Each fills one line of the workspace.
template <typename Value>
struct Steps : EdgeSamples<Value> {
  using Samples = EdgeSamples<Value>;
  using Work = typename Samples::Work;
  using Samples::half;
  using Samples::pastCaches;
  using EdgeSamples<Value>::EdgeSamples;
  using Samples::Shift;
  using Samples::tile;
  using Samples::work;

  // The roughness of both directions at the sites of a line; and the sums for the line above, of this line
  // and the one above that.
  HWY_NOINLINE void RoughLine(ptrdiff_t line) const {
    const HalfLine<Value>& above3 = work.samples[line - 3].green;
    const HalfLine<Value>& above2 = work.samples[line - 2].site;
    const HalfLine<Value>& above1 = work.samples[line - 1].green;
    const typename Work::Samples& here = work.samples[line];
    const HalfLine<Value>& below1 = work.samples[line + 1].green;
    const HalfLine<Value>& below2 = work.samples[line + 2].site;
    const HalfLine<Value>& below3 = work.samples[line + 3].green;
    const typename Work::Roughness& before = work.roughness[line - 2];
    typename Work::Roughness& to = work.roughness[line];
    typename Work::Roughness& sums = work.roughnessSums;
    const ptrdiff_t shift = Shift(line);
    ForVectors<Value>(half + 5, [&, shift](ptrdiff_t i) HWY_ATTR {
      const Many<Value> many;
      const auto at = [=](const Value* place) HWY_ATTR { return hn::LoadU(many, place); };
      const auto put = [=](auto rough, const HalfLine<Value>& first, HalfLine<Value>& second,
                           HalfLine<Value>& sum) HWY_ATTR {
        hn::StoreU(rough, many, second + i);
        hn::StoreU(hn::Add(at(first + i), rough), many, sum + i);
      };
      const auto centre = at(here.site + i);
      const ptrdiff_t left = i + shift - 1, right = i + shift;
      put(Rough(at(here.green + (left - 1)), at(here.green + (right + 1)), at(here.green + left),
                at(here.green + right), at(here.site + (i - 1)), at(here.site + (i + 1)), centre),
          before.x, to.x, sums.x);
      put(Rough(at(above3 + i), at(below3 + i), at(above1 + i), at(below1 + i), at(above2 + i),
                at(below2 + i), centre),
          before.y, to.y, sums.y);
    });
  }

  // The weights at the sites of a line: large where the surroundings are rough along y.
  //   X, Y = 4 + sum of the roughnesses of a site and its diagonal neighbours;   weight = Y^3 / (X^3 + Y^3)
  // The first estimate of green, both parts of it mixed from x and y by the weight:
  //   green at a site = mean of greens + slope * bend of colours, with a slope of 0.75
  HWY_NOINLINE void EstimateLine(ptrdiff_t line) const {
    const typename Work::Roughness& rough = work.roughness[line];
    const typename Work::Roughness& sums = work.roughnessSums;
    const HalfLine<Value>& above2 = work.samples[line - 2].site;
    const HalfLine<Value>& above = work.samples[line - 1].green;
    const typename Work::Samples& here = work.samples[line];
    const HalfLine<Value>& below = work.samples[line + 1].green;
    const HalfLine<Value>& below2 = work.samples[line + 2].site;
    typename Work::Estimates& to = work.estimates[line];
    const ptrdiff_t shift = Shift(line);
    ForVectors(half + 4, [&, shift](ptrdiff_t i) HWY_ATTR {
      const ptrdiff_t left = i + shift - 1, right = i + shift;
      const auto five = [=](const HalfLine<Value>& middle, const HalfLine<Value>& sides) HWY_ATTR {
        const auto outer = hn::Add(FewAt(sides + left), FewAt(sides + right));
        return Cube(Plus(4.0f, AsFloats(hn::Add(outer, FewAt(middle + i)))));
      };
      const auto roughX = five(rough.x, sums.x), roughY = five(rough.y, sums.y);
      const auto weight = hn::Div(roughY, hn::Add(roughX, roughY));
      const auto meanX = hn::Add(FewAt(here.green + left), FewAt(here.green + right));
      const auto meanY = hn::Add(FewAt(above + i), FewAt(below + i));
      const auto centre = FewAt(here.site + i);
      const auto twice = hn::Add(centre, centre);
      const auto bendX = hn::Sub(twice, hn::Add(FewAt(here.site + (i - 1)), FewAt(here.site + (i + 1))));
      const auto bendY = hn::Sub(twice, hn::Add(FewAt(above2 + i), FewAt(below2 + i)));
      const auto mixed = [=](auto first, auto second) HWY_ATTR {
        return hn::Add(AsFloats(second), hn::Mul(weight, AsFloats(hn::Sub(first, second))));
      };
      const auto bend = Times(0.25f, mixed(bendX, bendY));
      Put(weight, to.weight + i);
      Put(bend, to.bend + i);
      Put(hn::Add(Times(0.5f, mixed(meanX, meanY)), Times(0.75f, bend)), to.green + i);
    });
  }

  // The products of the differences of colour and of estimated green across a site, and the sums of three
  // lines for the next line of the same colour above:
  //         a
  //         .        x: d - b
  //   b . site . d   y: c - a
  //         .
  //         c
  HWY_NOINLINE void ProductLine(ptrdiff_t line) const {
    const HalfLine<Value>& siteAbove = work.samples[line - 2].site;
    const HalfLine<Value>& site = work.samples[line].site;
    const HalfLine<Value>& siteBelow = work.samples[line + 2].site;
    const HalfLine<float>& greenAbove = work.estimates[line - 2].green;
    const HalfLine<float>& green = work.estimates[line].green;
    const HalfLine<float>& greenBelow = work.estimates[line + 2].green;
    typename Work::Products& to = work.products[line];
    typename Work::Products& sums = work.productSums;
    const typename Work::Products& before = work.products[line - 4];
    const typename Work::Products& middle = work.products[line - 2];
    ForVectors(half + 3, [&](ptrdiff_t i) HWY_ATTR {
      const auto colourX = AsFloats(hn::Sub(FewAt(site + (i + 1)), FewAt(site + (i - 1))));
      const auto colourY = AsFloats(hn::Sub(FewAt(siteBelow + i), FewAt(siteAbove + i)));
      const auto greenX = hn::Sub(At(green + (i + 1)), At(green + (i - 1)));
      const auto greenY = hn::Sub(At(greenBelow + i), At(greenAbove + i));
      const auto put = [=](Vector product, const HalfLine<float>& first, const HalfLine<float>& second,
                           HalfLine<float>& third, HalfLine<float>& sum) HWY_ATTR {
        Put(product, third + i);
        Put(hn::Add(hn::Add(At(first + i), product), At(second + i)), sum + i);
      };
      const auto squaresX = hn::Add(hn::Mul(colourX, colourX), hn::Mul(greenX, greenX));
      const auto squaresY = hn::Add(hn::Mul(colourY, colourY), hn::Mul(greenY, greenY));
      const auto products = hn::Add(hn::Mul(colourX, greenX), hn::Mul(colourY, greenY));
      put(hn::Add(products, products), before.products, middle.products, to.products, sums.products);
      put(hn::Add(squaresX, squaresY), before.squares, middle.squares, to.squares, sums.squares);
    });
  }

  // How much colour and green change alike around a site, by the sums of 3x3 sites: from 0 for not at all to
  // 1 for the same; 1 where nothing changes. This slope replaces 0.75 in green, and colour becomes
  //   colour = slope * green + offset
  HWY_NOINLINE void SlopeLine(ptrdiff_t line) const {
    const typename Work::Products& sums = work.productSums;
    const typename Work::Estimates& from = work.estimates[line];
    const HalfLine<Value>& site = work.samples[line].site;
    typename Work::Fits& to = work.fits[line];
    ForVectors(half + 2, [&](ptrdiff_t i) HWY_ATTR {
      const auto nine = [=](const HalfLine<float>& sum) HWY_ATTR {
        return Plus(600.0f, hn::Add(hn::Add(At(sum + (i - 1)), At(sum + (i + 1))), At(sum + i)));
      };
      const auto slope = hn::Max(hn::Div(nine(sums.products), nine(sums.squares)), hn::Zero(kFloats));
      const auto green = hn::Add(At(from.green + i), hn::Mul(Plus(-0.75f, slope), At(from.bend + i)));
      Put(green, to.green + i);
      Put(slope, to.slope + i);
      Put(hn::Sub(AsFloats(FewAt(site + i)), hn::Mul(slope, green)), to.offset + i);
    });
  }

  // The line of the colour that a site lacks, from its diagonal neighbours, which have it:
  //   a . b      mixed from a + d and b + c by the cubes of
  //   . s .        |a - d| + |2 green - green a - green d| + 1
  //   c . d      and of the same for b and c
  HWY_NOINLINE void OtherLine(ptrdiff_t line) const {
    const HalfLine<Value>& siteAbove = work.samples[line - 1].site;
    const HalfLine<Value>& siteBelow = work.samples[line + 1].site;
    const typename Work::Fits& above = work.fits[line - 1];
    const typename Work::Fits& below = work.fits[line + 1];
    typename Work::Fits& here = work.fits[line];
    const ptrdiff_t shift = Shift(line);
    ForVectors(half + 1, [&, shift](ptrdiff_t i) HWY_ATTR {
      const ptrdiff_t before = i + shift - 1, behind = i + shift;
      const auto green = At(here.green + i);
      const auto twice = hn::Add(green, green);
      const auto change = [&](ptrdiff_t upper, ptrdiff_t lower) HWY_ATTR {
        const auto colours = AsFloats(hn::Abs(hn::Sub(FewAt(siteAbove + upper), FewAt(siteBelow + lower))));
        const auto greens = hn::Add(At(above.green + upper), At(below.green + lower));
        return Cube(Plus(1.0f, hn::Add(colours, hn::Abs(hn::Sub(twice, greens)))));
      };
      const auto falling = change(before, behind), rising = change(behind, before);
      const auto weight = hn::Div(rising, hn::Add(falling, rising));
      const auto mixed = [=](const HalfLine<float>& upper, const HalfLine<float>& lower) HWY_ATTR {
        return Times(0.5f, Mix(weight, hn::Add(At(upper + before), At(lower + behind)),
                               hn::Add(At(upper + behind), At(lower + before))));
      };
      Put(mixed(above.slope, below.slope), here.otherSlope + i);
      Put(mixed(above.offset, below.offset), here.otherOffset + i);
    });
  }

  // The samples of a line. A site has its own colour and green, and takes the other colour from its line; a
  // green takes both colours from the lines of its four neighbours:
  //   . s .     the colour of the line's sites: own lines of the sites beside it, other lines of those above
  //   s g s     and below; the other colour the other way round
  //   . s .
  template <ptrdiff_t kShift>
  HWY_NOINLINE void FinishLine(ptrdiff_t line) const {
    const typename Work::Samples& samples = work.samples[line];
    const HalfLine<float>& weights = work.estimates[line].weight;
    const typename Work::Fits& above = work.fits[line - 1];
    const typename Work::Fits& here = work.fits[line];
    const typename Work::Fits& below = work.fits[line + 1];
    const bool red = this->InRedLine(line);
    uint8_t* const ownChannel = work.channels[red ? 0 : 2].data();
    uint8_t* const greenChannel = work.channels[1].data();
    uint8_t* const otherChannel = work.channels[red ? 2 : 0].data();
    const auto store = [](auto atSite, auto atGreen, uint8_t* channel, ptrdiff_t i) HWY_ATTR {
      Samples::Store(kShift == 0 ? atSite : atGreen, kShift == 0 ? atGreen : atSite, channel, i);
    };
    const auto lanes = static_cast<ptrdiff_t>(hn::Lanes(kFloats));
    for (ptrdiff_t i = 0; i < half; i += lanes) {
      const ptrdiff_t before = i - kShift, behind = i + 1 - kShift;
      const auto green = AsFloats(FewAt(samples.green + i));
      const auto weight = Times(0.5f, hn::Add(At(weights + before), At(weights + behind)));
      const auto mixed = [=](const HalfLine<float>& beside, const HalfLine<float>& over,
                             const HalfLine<float>& under) HWY_ATTR {
        return Mix(weight, hn::Add(At(beside + before), At(beside + behind)),
                   hn::Add(At(over + i), At(under + i)));
      };
      const auto own = hn::Add(hn::Mul(mixed(here.slope, above.otherSlope, below.otherSlope), green),
                               mixed(here.offset, above.otherOffset, below.otherOffset));
      const auto other = hn::Add(hn::Mul(mixed(here.otherSlope, above.slope, below.slope), green),
                                 mixed(here.otherOffset, above.offset, below.offset));
      const auto greenAtSite = At(here.green + i);
      const auto otherAtSite =
          hn::Add(hn::Mul(At(here.otherSlope + i), greenAtSite), At(here.otherOffset + i));
      store(this->Exact(FewAt(samples.site + i)), this->Rounded(Times(0.5f, own)), ownChannel, i);
      store(this->Rounded(greenAtSite), this->Exact(FewAt(samples.green + i)), greenChannel, i);
      store(this->Rounded(otherAtSite), this->Rounded(Times(0.5f, other)), otherChannel, i);
    }
  }

  // The steps follow each other down the tile, each as many lines ahead of the finished line as the ones
  // behind it look ahead. A step starts at the first line that the ones behind it look back to.
  void Run() const {
    const auto top = static_cast<ptrdiff_t>(tile.top), bottom = static_cast<ptrdiff_t>(tile.bottom);
    for (ptrdiff_t line = top - 20; line < bottom; ++line) {
      this->LoadLine(line + 10);
      if (line >= top - 14) RoughLine(line + 7);
      if (line >= top - 12) EstimateLine(line + 6);
      if (line >= top - 8) ProductLine(line + 4);
      if (line >= top - 4) SlopeLine(line + 2);
      if (line >= top - 2) OtherLine(line + 1);
      if (line < top) continue;
      if (Shift(line) == 0) {
        FinishLine<0>(line);
      } else {
        FinishLine<1>(line);
      }
      this->WriteLine(line);
    }
    if (pastCaches) hwy::FlushStream();
  }
};

void RunTile8(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
              EdgeWorkspace<int16_t>& workspace) {
  Steps<int16_t>(mosaic, picture, tile, pastCaches, workspace).Run();
}

void RunTile16(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
               EdgeWorkspace<float>& workspace) {
  Steps<float>(mosaic, picture, tile, pastCaches, workspace).Run();
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace Demosaicing
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Demosaicing {

HWY_EXPORT(RunTile8);
HWY_EXPORT(RunTile16);

void InterpolateEdgeTile(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
                         EdgeWorkspace<int16_t>& workspace) {
  HWY_DYNAMIC_DISPATCH(RunTile8)(mosaic, picture, tile, pastCaches, workspace);
}

void InterpolateEdgeTile(const Mosaic& mosaic, const Picture& picture, const EdgeTile& tile, bool pastCaches,
                         EdgeWorkspace<float>& workspace) {
  HWY_DYNAMIC_DISPATCH(RunTile16)(mosaic, picture, tile, pastCaches, workspace);
}

}  // namespace Demosaicing
#endif
