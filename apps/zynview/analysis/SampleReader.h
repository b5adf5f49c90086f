// All samples of a line of a camera image, before unpacking, demosaicing, correction.
#pragma once

#include <QRect>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ZynImage.h"
#include "pixels/PixelTable.h"

namespace zynview {

// The samples of one kind within a line: at `first` of the line's values and every `step` places from there.
struct SampleRun {
  char kind;  // a letter of `PixelRow::samples`
  std::size_t first, step, count;
  int column, columnStep;  // of the picture
};

// Reads nothing but the `imageSize` bytes of the image, which must be there as long as the reader is used.
// What `ReadSample` tells pixel by pixel: the same values, and the same pixels are missing where the bytes
// end too early. A sample that two pixels share is there once. Filling bytes, which stand for an opaque
// picture, are left out. One thread at a time.
class SampleReader {
 public:
  explicit SampleReader(const ZynImage& source);

  // Without a known format there are no kinds, no depth, and nothing is read.
  const std::string& Kinds() const { return kinds; }  // such as "RGB", "RGBW", "L", "YUV"
  int Depth() const { return row ? row->depth : 0; }
  QRect Picture() const { return picture; }
  QRect Stored() const;  // the lines of the picture that have any bytes

  // The columns from `left` up to, but without, `right` of a line; what is off the picture is left out. Line
  // 0 is the top line of the picture, whatever the image's origin. The answer is good until the next one.
  const std::vector<SampleRun>& Read(int y, int left, int right);
  const std::vector<uint16_t>& Values() const { return values; }

 private:
  struct Line {
    const uint8_t* bytes;
    uint64_t size;
  };
  Line LineAt(int y) const;
  int Readable(const Line& line) const;
  void ReadMosaic(const Line& line, int y, int left, int right);
  void ReadPixels(const Line& line, int left, int right);
  void ReadPairs(const Line& line, int left, int right);

  const ZynImage image;
  const PixelRow* row;
  QRect picture;
  std::string kinds;
  std::vector<uint16_t> values;
  std::vector<SampleRun> runs;
};

}  // namespace zynview
