// The pictures of the card against those of the processor and against scalar models of the shaders: every
// format that both show, odd and even sizes, both orders of the lines, with and without correction and text.
//
// With ZYN_MATRIX=<file> in the environment the run includes the largest size, the screen for every format,
// and all combinations at 640x480, and writes the table of docs/cpu-and-gl.md into that file.
#include "tests/display/EqualityMatrix.h"

#include <QScreen>
#include <array>
#include <cmath>
#include <map>
#include <set>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/image/PixelFormats.h"
#include "gl/models/BayerModel.h"
#include "tests/display/EqualityFormat.h"
#include "tests/display/PictureFixture.h"
#include "tests/display/Sanitized.h"

namespace display_test {
namespace {

using equality::Column;
using equality::Matrix;
using equality::MatrixFormat;
using equality::Samples;
using equality::ShownFormats;

struct Size {
  uint32_t width, height;
};
constexpr Size kSizes[] = {{1, 1}, {2, 1}, {1, 2}, {3, 3}, {17, 13}, {64, 48}, {640, 480}};
constexpr Size kLargest{4096, 3072};
constexpr const char* kLargestFormats[] = {"Mono12", "BayerRG12p", "RGB8", "YUV422_8_UYVY"};
constexpr uint32_t kSparseFrom = 640;  // from this width on not every combination and place is looked at

constexpr uint32_t kTextIn = 64;  // at this width the text must be seen

// On the processor fractions of the depth's range. On the card they are fractions of the texel's, which is
// larger than that of deep samples: see `Offset`.
constexpr std::array<double, 3> kGain{1.25, 0.75, 1.5}, kOffset{0.05, -0.03, 0.0};

// Where text may be, from the picture's upper left corner.
constexpr uint32_t kTextWidth = 40, kTextHeight = 40;

// Mosaics: the card repeats the edge where the processor mirrors it.
constexpr uint32_t kMosaicBorder = 2;

// A picture as it was asked for.
struct Way {
  bool bottomUp, text, corrected, native;
};

std::string DescriptionOf(const Way& way) {
  return std::string(way.bottomUp ? "bottom-up" : "top-down") + (way.text ? ", text" : "") +
         (way.corrected ? ", corrected" : "") + (way.native ? ", native" : "");
}

class EqualityMatrix : public PictureTest,
                       public testing::WithParamInterface<std::string>,
                       protected MatrixFormat {
 protected:
  EqualityMatrix() : MatrixFormat(GetParam()) {}
  static void TearDownTestSuite() {
    if (Matrix::IsWanted()) {
      EXPECT_TRUE(Matrix::Instance().Write());
    }
  }

  void Enter(Column column, int64_t difference, int64_t bound) {
    Matrix::Instance().Enter(Family(), column, difference, bound);
    EXPECT_LE(difference, bound) << equality::TitleOf(column);
  }

  void Prepare(bool opengl, const HostImage& picture) {
    display->SetParameterInt("system.opengl", opengl);
    ASSERT_EQ(display->Initialize(&picture.record), 0u);
  }
  // How the same offset is told to the two: the card's full range is that of a texel of 8 or 16 bits.
  double Offset(bool opengl, size_t channel) const {
    return kOffset[channel] * (opengl && depth > 8 ? top / 65535.0 : 1.0);
  }
  // Out of a native sample its corrected value.
  int64_t Corrected(uint32_t sample, size_t channel) const {
    const double exact = sample * kGain[channel] + kOffset[channel] * top;
    return std::clamp<int64_t>(std::llround(exact), 0, top);
  }
  void Correct(bool opengl, bool on) {
    auto* const stage = dynamic_cast<ZynDisplayQT::ColorCorrection*>(
        display->GetProcessor()->FindProcessor("image.colorcorrection"));
    ASSERT_NE(stage, nullptr);
    QTD::ARGUMENTS values{{"gamma", "1"}};
    const char* const names[] = {"r", "g", "b"};
    for (size_t c = 0; c < 3; ++c) {
      // The processor counts the channels as they are stored, the card as they are called.
      const size_t named = opengl && kind.colour && name[0] == 'B' ? 2 - c : c;
      values[std::string("gain.") + names[named]] = QTD::ToText(on ? kGain[c] : 1.0);
      values[std::string("offs.") + names[named]] = QTD::ToText(on ? Offset(opengl, c) : 0.0);
    }
    ASSERT_EQ(stage->RunCommand("cmd.params.apply", &values), 1u);
  }

  // The converted picture, as the values of all channels. Values above the depth's range count as its top:
  // on the card only the texel ends what overshoots.
  Samples Convert(HostImage& picture, const Way& way) {
    const uint32_t width = picture.record.width, height = picture.record.height;
    const uint32_t wanted = way.native ? nativeCode : uint32_t{ZYN_PIXEL_RGB8};
    // The size of the library's own images, whose lines are a multiple of four bytes, is the one that is
    // taken.
    HostImage output(wanted, width, height, QTD::LinePitch(width, QTD::BitsPerPixel(wanted)));
    const std::vector<uint8_t> kept = picture.pixels;  // the processor corrects plain formats in place
    picture.record.origin = way.bottomUp;
    display->ReleaseConverter();
    EXPECT_EQ(display->ConvertImage(&picture.record, &output.record), 0u) << DescriptionOf(way);
    picture.pixels = kept;
    picture.record.imageData = picture.pixels.data();
    const size_t perLine = size_t{width} * (way.native ? channels : 3);
    const bool words = way.native && depth > 8;
    Samples values;
    values.reserve(perLine * height);
    for (uint32_t y = 0; y < height; ++y) {
      const uint8_t* const line = output.pixels.data() + size_t{y} * output.record.linePitch;
      for (size_t i = 0; i < perLine; ++i)
        values.push_back(words ? std::min(line[2 * i] | uint32_t{line[2 * i + 1]} << 8, top) : line[i]);
    }
    return values;
  }

  // The largest difference in the part of the picture that `skip` leaves.
  template <typename Skip>
  static int64_t Difference(const Samples& one, const Samples& other, const Size& size, const Skip& skip) {
    EXPECT_EQ(one.size(), other.size());
    if (one == other || one.size() != other.size()) return 0;
    const size_t perPixel = one.size() / (size_t{size.width} * size.height);
    int64_t most = 0;
    size_t at = 0;
    for (uint32_t y = 0; y < size.height; ++y) {
      for (uint32_t x = 0; x < size.width; ++x) {
        const bool skipped = skip(x, y);
        for (size_t c = 0; c < perPixel; ++c, ++at)
          if (!skipped) most = std::max(most, std::abs(int64_t{one[at]} - int64_t{other[at]}));
      }
    }
    return most;
  }
  bool InBorder(uint32_t x, uint32_t y, const Size& size) const {
    return kind.bayer && (x < kMosaicBorder || y < kMosaicBorder || x + kMosaicBorder >= size.width ||
                          y + kMosaicBorder >= size.height);
  }
  // Whether value `n` of the card's uncorrected picture may pass the depth's range there: interpolated values
  // of deep mosaics do, up to the texel's, and gains below 1 bring them back.
  bool Overshoots(const Samples& uncorrected, size_t n) const {
    return kind.bayer && depth > 8 && depth < 16 && uncorrected[n] == top;
  }
  // In a bottom-up picture the card's text stands at the other end.
  static bool InText(uint32_t x, uint32_t y, const Size& size) {
    return x < kTextWidth && (y < kTextHeight || y + kTextHeight >= size.height);
  }

  // Pictures of both variants in the combinations that they have in common.
  std::vector<Way> Ways(const Size& size) const {
    std::vector<Way> ways;
    const bool large = size.width > kSparseFrom, sparse = size.width >= kSparseFrom && !Matrix::IsWanted();
    for (int bits = 0; bits < 16; ++bits) {
      const Way way{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
      if (large && (way.text || way.corrected)) continue;  // no such stages in strict mode
      if (sparse && (way.text || way.bottomUp)) continue;
      if (kSanitized && (way.text || way.bottomUp)) continue;
      if (way.native && nativeCode == ZYN_PIXEL_RGB8) continue;
      ways.push_back(way);
    }
    return ways;
  }
  std::vector<Samples> Pictures(bool opengl, HostImage& picture, const std::vector<Way>& ways) {
    std::vector<Samples> pictures;
    SCOPED_TRACE(opengl ? "card" : "processor");
    Prepare(opengl, picture);
    for (const Way& way : ways) {
      if (way.corrected && !opengl && depth == 8) {  // refused there
        pictures.emplace_back();
        continue;
      }
      std::string id;
      auto* const overlay =
          dynamic_cast<ZynDisplayQT::ImageOverlay*>(display->GetProcessor()->FindProcessor("image.overlay"));
      if (way.corrected) Correct(opengl, true);
      if (way.text) {
        QTD::PROPERTIES white;
        white.Set("text.clr", "16777215");
        id = overlay->AddText("L", 4, 4, &white);
        EXPECT_FALSE(id.empty());
      }
      pictures.push_back(Convert(picture, way));
      if (way.text) overlay->DeleteObject(id);
      if (way.corrected) Correct(opengl, false);
    }
    return pictures;
  }

  void Compare(const Size& size) {
    SCOPED_TRACE(name + " " + std::to_string(size.width) + "x" + std::to_string(size.height));
    HostImage picture(code, size.width, size.height);
    const Samples samples = Fill(picture, size.width * 31 + size.height);
    const std::vector<Way> ways = Ways(size);
    const std::vector<Samples> plain = Pictures(false, picture, ways), card = Pictures(true, picture, ways);
    ASSERT_EQ(plain.size(), card.size());
    for (size_t n = 0; n < ways.size(); ++n) {
      const Way& way = ways[n];
      SCOPED_TRACE(DescriptionOf(way));
      const Samples* const before = way.corrected ? Uncorrected(ways, card, way) : nullptr;
      CompareVariants(size, way, plain[n], card[n], before);
      if (way.text && size.width == kTextIn) {
        const auto same = std::find_if(ways.begin(), ways.end(), [&](const Way& other) {
          return other.bottomUp == way.bottomUp && other.corrected == way.corrected &&
                 other.native == way.native && !other.text;
        });
        ASSERT_NE(same, ways.end());
        const auto m = static_cast<size_t>(same - ways.begin());
        EXPECT_NE(card[n], card[m]) << "no text";
        if (!plain[n].empty()) {
          EXPECT_NE(plain[n], plain[m]) << "no text";
        }
      }
      if (way.text || !(way.native || nativeCode == ZYN_PIXEL_RGB8)) continue;
      if (!way.corrected) CompareWithSamples(size, way, samples, card[n]);
      if (before) CompareCorrection(*before, card[n]);
    }
  }
  // The native picture of the same order of lines without correction and text; null when there is none.
  const Samples* Uncorrected(const std::vector<Way>& ways, const std::vector<Samples>& pictures,
                             const Way& way) const {
    const bool native = nativeCode != ZYN_PIXEL_RGB8;
    for (size_t n = 0; n < ways.size(); ++n) {
      if (ways[n].bottomUp == way.bottomUp && ways[n].native == native && !ways[n].text && !ways[n].corrected)
        return &pictures[n];
    }
    return nullptr;
  }

  void CompareVariants(const Size& size, const Way& way, const Samples& plain, const Samples& card,
                       const Samples* before) {
    if (plain.empty() || edgeStep || HasBrokenRows(size.width)) return;
    const auto overshoots = [&](uint32_t x, uint32_t y) {
      const size_t at = 3 * (size_t{y} * size.width + x);
      return before && kind.bayer &&
             (Overshoots(*before, at) || Overshoots(*before, at + 1) || Overshoots(*before, at + 2));
    };
    const int64_t difference = Difference(plain, card, size, [&](uint32_t x, uint32_t y) {
      return InBorder(x, y, size) || (way.text && InText(x, y, size)) || overshoots(x, y);
    });
    const Column column = way.corrected ? (way.native ? Column::kCorrectedNative : Column::kCorrected)
                                        : (way.native ? Column::kNative : Column::kPlain);
    Enter(way.text ? Column::kAroundText : column, difference, Bound(way));
  }
  // What the stages may add, in code values of the result. Both variants round a mosaic and a corrected value
  // once each; a mosaic's difference passes the gain.
  int64_t Bound(const Way& way) const { return (kind.bayer ? 1 : 0) + (way.corrected ? 1 : 0); }

  // The card's native picture against the samples themselves, or what the demosaicing's model makes of them.
  void CompareWithSamples(const Size& size, const Way& way, const Samples& samples, const Samples& card) {
    if (kind.uyvy) return;
    const size_t perLine = size_t{size.width} * channels;
    ASSERT_EQ(card.size(), perLine * size.height);
    if (kind.bayer) return CompareWithMosaic(size, way, samples, card);
    // RGB8 is also the native format of monochrome ones with nothing else: not here.
    int64_t most = 0;
    for (uint32_t y = 0; y < size.height; ++y) {
      const uint32_t line = way.bottomUp ? size.height - 1 - y : y;
      for (size_t i = 0; i < perLine; ++i)
        most =
            std::max(most, std::abs(int64_t{samples[line * perLine + i]} - int64_t{card[y * perLine + i]}));
    }
    Enter(Column::kModel, most, 0);
  }
  void CompareWithMosaic(const Size& size, const Way& way, const Samples& samples, const Samples& card) {
    static const std::map<std::string, model::BayerPattern> kPatterns = {
        {"GR", model::kGR}, {"RG", model::kRG}, {"BG", model::kBG}, {"GB", model::kGB}};
    const model::BayerPlan plan{kPatterns.at(name.substr(5, 2)), false, 1.0};
    const int bits = depth == 8 ? 8 : 16;
    const model::Texels texels(static_cast<int>(size.width), static_cast<int>(size.height), 1, samples, bits);
    const double ceiling = depth == 8 ? 1.0 : top / 65535.0, full = depth == 8 ? 255 : 65535;
    const uint32_t step = size.width >= kSparseFrom ? 13 : 1;
    int64_t most = 0;
    for (size_t n = 0; n < size_t{size.width} * size.height; n += step) {
      const auto x = static_cast<int>(n % size.width), y = static_cast<int>(n / size.width);
      const int line = way.bottomUp ? static_cast<int>(size.height) - 1 - y : y;
      const model::Rgb exact = model::BayerSite(texels, plan, x, line).color();
      int64_t here = 0;
      for (size_t c = 0; c < 3; ++c)
        here = std::max<int64_t>(
            here, std::abs(std::llround(std::min(exact[c], ceiling) * full) - int64_t{card[3 * n + c]}));
      // A near tie of the edge step may go either way: then the picture must be one of the allowed ones.
      if (here > 1 && model::BayerAllows(texels, plan, x, line, &card[3 * n], bits, 1.0)) here = 1;
      most = std::max(most, here);
    }
    Enter(Column::kModel, most, 1);
  }
  // The corrected picture against what the model makes of the uncorrected one.
  void CompareCorrection(const Samples& before, const Samples& after) {
    ASSERT_EQ(before.size(), after.size());
    int64_t most = 0;
    for (size_t n = 0; n < before.size(); ++n) {
      if (Overshoots(before, n)) continue;
      most = std::max(most, std::abs(Corrected(before[n], n % channels) - int64_t{after[n]}));
    }
    Enter(Column::kCorrectionModel, most, 1);
  }

  // On the screen.

  QImage Grab(bool opengl, const HostImage& picture) {
    Prepare(opengl, picture);
    EXPECT_TRUE(WaitFor([&] { return display->Viewer() && Window() && Window()->isExposed(); }));
    const std::size_t before = receiver.Images();
    EXPECT_EQ(display->DisplayVideo(&picture.record), 0u);
    EXPECT_TRUE(WaitForImages(before + 1));
    EXPECT_TRUE(WaitFor([&] { return Screen()->isReady(); }));
    Settle(120);  // swaps are 31 ms apart
    return Window()->QWindow::screen()->grabWindow(Window()->winId()).toImage();
  }
  void CompareScreens() {
    // The window has the picture's size, so that it is shown one to one; the scroll bars take the rest.
    const Size size{128, 96};
    parent.resize(static_cast<int>(size.width) + 14, static_cast<int>(size.height) + 14);
    Settle(20);
    HostImage picture(code, size.width, size.height);
    Fill(picture, 5);
    display->AddNotification(&receiver);
    display->SetParameterInt("image.notification.flags.set", 1);
    const QImage plain = Grab(false, picture), card = Grab(true, picture);
    ASSERT_EQ(plain.size(), QSize(static_cast<int>(size.width), static_cast<int>(size.height)));
    ASSERT_EQ(plain.size(), card.size());
    int64_t most = 0;
    std::vector<QRgb> colors;
    for (uint32_t y = 0; y < size.height; ++y) {
      for (uint32_t x = 0; x < size.width; ++x) {
        if (InBorder(x, y, size)) continue;
        const QRgb one = plain.pixel(static_cast<int>(x), static_cast<int>(y));
        const QRgb other = card.pixel(static_cast<int>(x), static_cast<int>(y));
        colors.push_back(one);
        most =
            std::max<int64_t>({most, std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                               std::abs(qBlue(one) - qBlue(other))});
      }
    }
    EXPECT_GT(std::set<QRgb>(colors.begin(), colors.end()).size(), 50u) << "there is no picture";
    if (!edgeStep) Enter(Column::kScreen, most, ScreenBound());
  }
  // The processor cuts lower bits off, the card rounds.
  int64_t ScreenBound() const { return (depth > 8 ? 1 : 0) + (kind.bayer ? 1 : 0); }
};

TEST_P(EqualityMatrix, holds_for_every_size_on_the_screen) {
  for (const Size& size : kSizes) {
    if (kSanitized && size.width >= kSparseFrom) continue;
    Compare(size);
    if (HasFatalFailure()) return;
  }
  if (Matrix::IsWanted() && std::count(std::begin(kLargestFormats), std::end(kLargestFormats), name))
    Compare(kLargest);
}

TEST_P(EqualityMatrix, holds_in_the_window_on_the_screen) {
  if (Matrix::IsWanted() || std::count(std::begin(kLargestFormats), std::end(kLargestFormats), name))
    CompareScreens();
}

INSTANTIATE_TEST_SUITE_P(Formats, EqualityMatrix, testing::ValuesIn(ShownFormats()),
                         [](const testing::TestParamInfo<std::string>& format) {
                           return format.param + "_on_the_screen";
                         });

}  // namespace
}  // namespace display_test
