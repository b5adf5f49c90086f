// Binary PGM and PPM files with samples of more than 8 bits, which Qt would cut to 8.
#pragma once

#include <QIODevice>
#include <QString>
#include <cstdint>
#include <vector>

namespace zynview {

struct DeepNetpbm {
  uint32_t width = 0, height = 0;
  uint32_t channels = 1;          // 1 or 3
  uint32_t greatest = 0;          // the value that stands for white
  std::vector<uint16_t> samples;  // as they stand in the file, lines without padding

  // Of 10, 12, 14 or 16 bits where `greatest` is the top of such a range, else of 16 bits.
  uint32_t PixelType() const;
};

// Reads the header at the begin of `input`. False where this is no such file; `input` stands anywhere then.
// A size or a greatest value that is out of range is answered all the same: `ReadNetpbmSamples` says so.
bool ReadNetpbmHeader(QIODevice& input, DeepNetpbm* picture);

// The samples behind the header. False, and why, where the header claims what is not there: memory is taken
// for what the file holds alone.
bool ReadNetpbmSamples(QIODevice& input, DeepNetpbm* picture, QString* error);

}  // namespace zynview
