// Pictures, raw frames and raw dumps as a sequence of frames that can be played and stepped through.
#pragma once

#include <QString>
#include <QStringList>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <vector>

#include "sources/FrameFiles.h"
#include "sources/FrameSource.h"

namespace zynview {

// Holds one frame at a time in memory. Files that cannot be read are skipped, and each of them is told once.
// Behind the last frame comes the first one again.
class FileSource : public FrameSource {
 public:
  // Frames per second; 0 is as fast as it goes. Without a number it is the usual rate, and a slow one for a
  // single frame, which is always the same.
  FileSource(const QStringList& filesAndFolders, const FileFormat& fileFormat,
             std::optional<double> framesPerSecond);

  // Reads up to the first frame that can be read.
  bool Open(QString* error) override;
  ZynImage Format() const override { return format; }
  QString Description() const override { return description; }
  void Run(const Sink& sink) override;

  bool CanHold() const override { return true; }
  void Hold(bool on) override;
  void Step(int frames) override;
  QStringList TakeProblems() override;

  // One after the other, without a rate. Not while `Run` is under way.
  uint64_t Count() const { return count; }
  bool Load(uint64_t position, OwnFrame* frame, QString* error) const;
  // Of the file without its ending, with a number where the file has several frames; no two are the same.
  QString NameOf(uint64_t position) const;
  QStringList Inputs() const;  // all files that are read, with the sidecars
  // What is left out of files that can be read, one sentence each; `Open` makes problems of them as well.
  QStringList Remarks() const;

 private:
  using Clock = std::chrono::steady_clock;

  // What to do next, as the user and the clock say.
  enum class Turn { Wait, Again, Move };
  Turn NextTurn(Clock::time_point due, int* frames);

  // Goes `frames` further, and over the frames that cannot be read in the same direction, as long as
  // `goesOn` says so. False when there is no frame then.
  bool MoveBy(int64_t frames, const std::function<bool()>& goesOn);
  bool LoadPresent();
  void NameFiles();
  std::size_t FileAt(uint64_t at, uint64_t* number) const;  // its index, and the frame within it
  uint64_t Wrapped(int64_t frames) const;

  const QStringList paths;
  const FileFormat fileFormat;
  const std::optional<double> rate;
  Clock::duration period{};
  std::vector<FrameFile> files;
  std::vector<QString> names;  // with a dash at the end where the frame's number follows
  std::vector<uint64_t> ends;  // positions behind the last frames of the files
  uint64_t count = 0;
  ZynImage format{};
  QString description;

  // The thread of `Open` first, then that of `Run`.
  uint64_t position = 0, loadedPosition = UINT64_MAX;
  OwnFrame loaded;

  std::mutex lock;  // guards what follows
  std::condition_variable changed;
  bool held = false, again = false;
  int steps = 0;
  QStringList problems;
  std::set<QString> told;
};

}  // namespace zynview
