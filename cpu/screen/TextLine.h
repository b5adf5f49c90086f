// What the text engines of this room share: a line of text, cut at its first tab.
#pragma once

#include <cstdint>
#include <string>

struct TextLine {
  explicit TextLine(const char* text) : piece(text ? text : "") {
    const size_t tab = piece.find('\t');
    if (tab == std::string::npos) return;
    rest = piece.substr(tab + 1);
    piece.resize(tab);
  }

  std::string piece;  // up to the first tab
  std::string rest;   // behind it; empty when there is no tab or nothing stands behind it
};

// The first tab stop behind a piece of `width` pixels that begins at `x`: stops lie four font heights apart.
// False when there are none, or none in the range of int.
bool NextTabStop(int x, int width, int fontHeight, int* stop);
