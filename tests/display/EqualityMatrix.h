// The table of docs/cpu-and-gl.md: the largest difference between two pictures, by family and stage.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace display_test {
namespace equality {

enum class Column {
  kModel,
  kNative,
  kPlain,
  kCorrectionModel,
  kCorrectedNative,
  kCorrected,
  kAroundText,
  kScreen
};

constexpr const char* kTitles[] = {"unpacked or demosaiced, against the model",
                                   "native",
                                   "RGB8",
                                   "corrected, against the model",
                                   "corrected, native",
                                   "corrected, RGB8",
                                   "around text",
                                   "window"};

inline const char* TitleOf(Column column) {
  return kTitles[static_cast<size_t>(column)];
}

class Matrix {
 public:
  static Matrix& Instance() {
    static Matrix matrix;
    return matrix;
  }
  static const char* Path() { return std::getenv("ZYN_MATRIX"); }
  static bool IsWanted() { return Path() != nullptr; }

  void Enter(const std::string& family, Column column, int64_t difference, int64_t bound) {
    if (cells.find(family) == cells.end()) families.push_back(family);
    Cell& cell = cells[family][column];
    cell.difference = std::max(cell.difference, difference);
    cell.bound = std::max(cell.bound, bound);
    ++cell.pictures;
    ++pictures;
  }

  // A row for each family in the order in which they came: "measured (bound)".
  bool Write() const {
    std::ofstream file(Path());
    file << "| family |";
    for (const char* const title : kTitles) file << " " << title << " |";
    file << "\n|---|";
    for (size_t n = 0; n < std::size(kTitles); ++n) file << "---|";
    file << "\n";
    for (const std::string& family : families) {
      file << "| " << family << " |";
      for (size_t n = 0; n < std::size(kTitles); ++n) {
        const auto& row = cells.at(family);
        const auto found = row.find(static_cast<Column>(n));
        if (found == row.end()) {
          file << " – |";
        } else {
          file << " " << found->second.difference << " (" << found->second.bound << ") |";
        }
      }
      file << "\n";
    }
    file << "\n" << pictures << " comparisons of pictures.\n";
    return file.good();
  }

 private:
  struct Cell {
    int64_t difference = 0, bound = 0, pictures = 0;
  };
  std::map<std::string, std::map<Column, Cell>> cells;
  std::vector<std::string> families;
  int64_t pictures = 0;
};

}  // namespace equality
}  // namespace display_test
