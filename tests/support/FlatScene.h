// A flat coloured scene in each of the 133 pixel formats, made from what their names say.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace flat_scene {

inline bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}
inline bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// What a format's name says about it.
struct Kind {
  explicit Kind(const std::string& name)
      : uyvy(name == "YUV422_8_UYVY"),
        trueSense(StartsWith(name, "TrueSense")),
        mono(StartsWith(name, "Mono") && name.find("Brio") == std::string::npos),
        bayer(StartsWith(name, "Bayer") && name.find("Brio") == std::string::npos),
        colour((StartsWith(name, "RGB") || StartsWith(name, "BGR")) && name[3] != 'a' &&
               name.find("BRIO") == std::string::npos),
        lsb((mono || bayer) && EndsWith(name, "p")),
        packed((mono || bayer) && EndsWith(name, "Packed")) {
    for (const uint32_t bits : {8u, 10u, 12u, 14u, 16u}) {
      if (name.find(std::to_string(bits)) != std::string::npos) depth = bits;
    }
  }
  bool uyvy, trueSense, mono, bayer, colour, lsb, packed;
  uint32_t depth = 8;
};

// Samples of a flat scene, in the highest bits of the depth and with low bits that the packings keep apart.
inline std::array<uint32_t, 3> Colour(uint32_t depth) {
  const uint32_t top = (1u << depth) - 1;
  return {top / 3 | 1, top / 5 | 2, top / 9};
}

// The value of a stored sample: by the cell's letter for Bayer, the first for monochrome.
inline uint32_t SampleAt(const std::string& name, const Kind& kind, uint32_t x, uint32_t y) {
  const std::array<uint32_t, 3> colour = Colour(kind.depth);
  if (!kind.bayer) return colour[1];
  const std::string order = name.substr(5, 2);  // of the first line
  const char first = order[0], second = order[1];
  const char other = first == 'G' ? (second == 'R' ? 'B' : 'R') : (first == 'R' ? 'B' : 'R');
  char letter;
  if (first == 'G') {
    letter = y % 2 == 0 ? (x % 2 == 0 ? 'G' : second) : (x % 2 == 0 ? other : 'G');
  } else {
    letter = y % 2 == 0 ? (x % 2 == 0 ? first : 'G') : (x % 2 == 0 ? 'G' : other);
  }
  return letter == 'R' ? colour[0] : letter == 'G' ? colour[1] : colour[2];
}

// Writes two neighbouring samples of a line of packed bytes, or the last one of an odd line.
inline void PutPacked(std::vector<uint8_t>& bytes, uint32_t first, uint32_t second, bool pair,
                      uint32_t depth) {
  const uint32_t low = depth - 8, mask = (1u << low) - 1;
  bytes.push_back(static_cast<uint8_t>(first >> low));
  bytes.push_back(static_cast<uint8_t>((first & mask) | (second & mask) << 4));
  if (pair) bytes.push_back(static_cast<uint8_t>(second >> low));
}

inline std::vector<uint8_t> FlatScene(const std::string& name, const Kind& kind, uint32_t width,
                                      uint32_t height) {
  std::vector<uint8_t> bytes;
  uint64_t bits = 0;
  uint32_t held = 0;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      if (kind.uyvy) {
        bytes.push_back(x % 2 == 0 ? 100 : 150);  // U, V
        bytes.push_back(129);                     // Y
      } else if (kind.colour) {
        const std::array<uint32_t, 3> colour = Colour(kind.depth);
        for (const size_t sample :
             StartsWith(name, "RGB") ? std::array<size_t, 3>{0, 1, 2} : std::array<size_t, 3>{2, 1, 0}) {
          bytes.push_back(static_cast<uint8_t>(colour[sample]));
          if (kind.depth > 8) bytes.push_back(static_cast<uint8_t>(colour[sample] >> 8));
        }
      } else if (kind.packed) {
        if (x % 2 == 0)
          PutPacked(bytes, SampleAt(name, kind, x, y), x + 1 < width ? SampleAt(name, kind, x + 1, y) : 0,
                    x + 1 < width, kind.depth);
      } else if (kind.lsb) {
        bits |= uint64_t{SampleAt(name, kind, x, y)} << held;
        for (held += kind.depth; held >= 8; held -= 8, bits >>= 8)
          bytes.push_back(static_cast<uint8_t>(bits));
      } else {
        const uint32_t sample = SampleAt(name, kind, x, y);
        bytes.push_back(static_cast<uint8_t>(sample));
        if (kind.depth > 8) bytes.push_back(static_cast<uint8_t>(sample >> 8));
      }
    }
  }
  if (held != 0) bytes.push_back(static_cast<uint8_t>(bits));
  return bytes;
}

// The three (or one) samples of each pixel of the result.
inline std::vector<uint32_t> FlatResult(const std::string& name, const Kind& kind) {
  // BT.601, limited range: 1.164 (Y - 16) plus 1.596 (V - 128), -0.813 (V - 128) - 0.391 (U - 128), 2.018 (U
  // - 128)
  if (kind.uyvy) return {167, 125, 75};
  const std::array<uint32_t, 3> colour = Colour(kind.depth);
  if (kind.mono) return {colour[1]};
  if (kind.bayer || StartsWith(name, "RGB")) return {colour[0], colour[1], colour[2]};
  return {colour[2], colour[1], colour[0]};
}

}  // namespace flat_scene
