// Files with frames: pictures, raw frames with their sidecars, and raw dumps; single ones and whole folders.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

#include "sources/FrameKeeper.h"

namespace zynview {

// How the command line wants files to be read.
struct FileFormat {
  uint32_t pixelType = 0;  // 0: as the file has it. With a size, of raw dumps; alone, to draw pictures in
  QSize size;
  uint32_t pitch = 0;  // of raw dumps; 0: lines without padding

  bool IsOfDumps() const { return pixelType != 0 && !size.isEmpty(); }
};

struct FrameFile {
  enum Kind { Picture, Dump, WithSidecar } kind = Picture;
  QString path;        // with a sidecar, that of the raw frame
  uint64_t count = 1;  // frames in the file, for a dump
  uint64_t rest = 0;   // bytes behind them
};

// Reads lists of folders and sizes of files, and no contents. A folder gives what looks like a picture or a
// raw frame, in the order of the names with their numbers ("frame-9" before "frame-10"); a file that is named
// itself is always taken. Both names of a pair make one frame.
std::vector<FrameFile> ListFrameFiles(const QStringList& paths, const FileFormat& format);

// Reads one frame; any thread. False, and what is wrong with a name of the file, where it cannot be read.
// Without a number of its own, the frame has `number` + 1 counted from the start of the file.
bool LoadFrame(const FrameFile& file, uint64_t number, const FileFormat& format, OwnFrame* frame,
               QString* error);

}  // namespace zynview
