// What the command line asks for.
#pragma once

#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

#include "view/ColorSettings.h"

namespace zynview {

struct Options {
  enum Source { Camera, Simulator, File, Raw, Scene } source = Camera;
  QString camera;          // id or address; empty: the first one found
  QStringList files;       // pictures, raw frames, raw dumps, folders
  uint32_t pixelType = 0;  // 0: what the source delivers by itself
  QSize size;
  uint32_t pitch = 0;          // of a raw dump; 0: lines without padding
  std::optional<double> rate;  // frames per second of files and scene; 0: as fast as it goes
  double seconds = 0;          // 0: until the window is closed
  QString save;                // where the window's picture goes at the end
  QString convert;             // where the frames go as pictures, without a window; empty: they are shown
  QString folder;           // where frames and pictures are saved; empty: the settings, then the current one
  QSize window;             // of the picture's part of the window; empty: a useful one
  bool bare = false;        // no status bar, no menu bar
  bool opengl = false;      // the display's OpenGL variant
  bool processor = false;   // the other variant, whatever the settings say
  bool noSettings = false;  // neither read nor written
  // What is on at the start.
  bool statusLine = false, information = false, overlays = false;
  QRect region;  // marked at the start, and framed by the overlays; empty: the middle of the picture, not
                 // marked
  ColorSettings color;
};

// Reads the command line; on a mistake, `error` says which. Answers help and version itself and ends the
// program.
bool ReadOptions(const QStringList& arguments, Options* options, QString* error);

}  // namespace zynview
