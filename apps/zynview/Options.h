// What the command line asks for.
#pragma once

#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <cstdint>

#include "ColorSettings.h"

namespace zynview {

struct Options {
  enum Source { Camera, Simulator, File, Raw, Scene } source = Camera;
  QString camera;          // id or address; empty: the first one found
  QString file;            // picture or raw dump
  uint32_t pixelType = 0;  // 0: what the source delivers by itself
  QSize size;
  uint32_t pitch = 0;   // of a raw dump; 0: lines without padding
  double rate = 25;     // frames per second of files and scene; 0: as fast as it goes
  double seconds = 0;   // 0: until the window is closed
  QString save;         // where the window's picture goes at the end
  QSize window;         // of the picture's part of the window; empty: a useful one
  bool bare = false;    // no status bar
  bool opengl = false;  // the display's OpenGL variant
  // What is on at the start.
  bool statusLine = false, information = false, overlays = false;
  QRect region;  // that the overlays frame; empty: the middle of the picture
  ColorSettings color;
};

// Reads the command line; on a mistake, `error` says which. Answers help and version itself and ends the
// program.
bool ReadOptions(const QStringList& arguments, Options* options, QString* error);

}  // namespace zynview
