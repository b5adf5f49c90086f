#include "sources/FileSource.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <algorithm>

#include "sources/Sidecar.h"

namespace zynview {

namespace {

using Clock = std::chrono::steady_clock;

// The sink is asked at least so often whether to go on.
constexpr std::chrono::milliseconds kPatience{100};
constexpr double kLeastRate = 1e-3;
constexpr double kStillRate = 5;  // of a single frame: each time all stages process it again
constexpr std::size_t kMostProblems = 1000;

Clock::duration Period(double rate) {
  if (!(rate > 0)) return Clock::duration::zero();
  return std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(1 / std::max(rate, kLeastRate)));
}

uint64_t Now() {
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::system_clock::now().time_since_epoch())
                                   .count());
}

QString Describe(const QStringList& paths, uint64_t count) {
  const QString first = QFileInfo(QDir::cleanPath(paths.first())).fileName();
  const QString name = first.isEmpty() ? paths.first() : first;
  return count == 1 ? name : QStringLiteral("%1 (%2 frames)").arg(name).arg(count);
}

}  // namespace

FileSource::FileSource(const QStringList& filesAndFolders, const FileFormat& wantedFormat,
                       std::optional<double> framesPerSecond)
    : paths(filesAndFolders), fileFormat(wantedFormat), rate(framesPerSecond) {}

bool FileSource::Open(QString* error) {
  files = ListFrameFiles(paths, fileFormat);
  ends.clear();
  count = 0;
  for (const FrameFile& file : files) ends.push_back(count += file.count);
  NameFiles();
  period = Period(rate.value_or(count == 1 ? kStillRate : kUsualRate));
  if (count == 0) {
    *error = QStringLiteral("%1: no pictures and no raw frames there").arg(paths.join(QStringLiteral(", ")));
    return false;
  }
  position = 0;
  if (!MoveBy(0, [] { return true; })) {
    const QStringList all = TakeProblems();
    *error = all.isEmpty() ? QStringLiteral("nothing can be read") : all.first();
    if (all.size() > 1) *error += QStringLiteral(" (and %1 more)").arg(all.size() - 1);
    return false;
  }
  format = loaded.record;
  description = Describe(paths, count);
  const std::lock_guard<std::mutex> guard(lock);
  problems << Remarks();
  return true;
}

std::size_t FileSource::FileAt(uint64_t at, uint64_t* number) const {
  const auto end = std::upper_bound(ends.begin(), ends.end(), at);
  const auto index = static_cast<std::size_t>(end - ends.begin());
  *number = at - (*end - files[index].count);
  return index;
}

// Endings count only where names are the same without them.
void FileSource::NameFiles() {
  QHash<QString, int> bases;
  for (const FrameFile& file : files) ++bases[QFileInfo(file.path).completeBaseName()];
  names.clear();
  for (const FrameFile& file : files) {
    const QFileInfo info(file.path);
    names.push_back(bases[info.completeBaseName()] == 1 ? info.completeBaseName() : info.fileName());
  }
  QHash<QString, int> whole;
  for (const QString& name : names) ++whole[name];
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool severalFrames = files[i].count > 1 || whole[names[i]] > 1;
    if (severalFrames) names[i] += QLatin1Char('-');
  }
}

bool FileSource::Load(uint64_t at, OwnFrame* frame, QString* error) const {
  if (at >= count) {
    *error = QStringLiteral("there is no frame %1").arg(at);
    return false;
  }
  uint64_t number = 0;
  const FrameFile& file = files[FileAt(at, &number)];
  if (!LoadFrame(file, number, fileFormat, frame, error)) return false;
  // The files are frames of one sequence; only a sidecar knows better.
  if (file.kind != FrameFile::WithSidecar) frame->record.imageID = at + 1;
  return true;
}

QString FileSource::NameOf(uint64_t at) const {
  if (at >= count) return {};
  uint64_t number = 0;
  QString name = names[FileAt(at, &number)];
  if (name.endsWith(QLatin1Char('-'))) name += QStringLiteral("%1").arg(at + 1, 6, 10, QLatin1Char('0'));
  return name;
}

QStringList FileSource::Inputs() const {
  QStringList inputs;
  for (const FrameFile& file : files) {
    inputs << file.path;
    if (file.kind == FrameFile::WithSidecar) inputs << SidecarFileOf(file.path);
  }
  return inputs;
}

QStringList FileSource::Remarks() const {
  QStringList remarks;
  for (const FrameFile& file : files) {
    if (file.rest == 0) continue;
    remarks << QStringLiteral("%1: the last %2 bytes are no whole frame and are left out")
                   .arg(file.path, QString::number(file.rest));
  }
  return remarks;
}

bool FileSource::LoadPresent() {
  if (loadedPosition == position) return true;
  loadedPosition = UINT64_MAX;
  QString error;
  bool good = false;
  try {
    good = Load(position, &loaded, &error);
  } catch (const std::bad_alloc&) {
    error = QStringLiteral("frame %1: no memory").arg(position + 1);
  }
  if (good) {
    loadedPosition = position;
    return true;
  }
  const std::lock_guard<std::mutex> guard(lock);
  if (told.size() < kMostProblems && told.insert(error).second) problems << error;
  return false;
}

uint64_t FileSource::Wrapped(int64_t frames) const {
  const auto all = static_cast<int64_t>(count);
  return static_cast<uint64_t>(((static_cast<int64_t>(position) + frames) % all + all) % all);
}

bool FileSource::MoveBy(int64_t frames, const std::function<bool()>& goesOn) {
  const int64_t onwards = frames < 0 ? -1 : 1;
  position = Wrapped(frames);
  for (uint64_t tried = 0; tried < count && goesOn(); ++tried) {
    if (LoadPresent()) return true;
    position = Wrapped(onwards);
  }
  return false;
}

FileSource::Turn FileSource::NextTurn(Clock::time_point due, int* frames) {
  std::unique_lock<std::mutex> guard(lock);
  const auto isAsked = [this] { return again || steps != 0; };
  const auto now = Clock::now();
  const auto end = held ? now + kPatience : std::min(due, now + kPatience);
  changed.wait_until(guard, end, isAsked);
  *frames = steps;
  steps = 0;
  if (*frames != 0) {
    again = false;
    return Turn::Move;
  }
  if (again) {
    again = false;
    return Turn::Again;
  }
  *frames = 1;
  return !held && Clock::now() >= due ? Turn::Move : Turn::Wait;
}

void FileSource::Run(const Sink& sink) {
  bool running = true;
  const auto goesOn = [&] { return running = running && sink(ZynImage{}); };
  auto due = Clock::now();
  Turn turn = Turn::Again;  // the frame that `Open` has read
  int frames = 0;
  for (; running; turn = NextTurn(due, &frames)) {
    const bool loads = turn == Turn::Again ? LoadPresent() : turn == Turn::Move && MoveBy(frames, goesOn);
    if (turn != Turn::Wait) due = std::max(due, Clock::now() - period) + period;
    if (turn == Turn::Move && !loads) due = Clock::now() + kPatience;
    ZynImage frame{};
    if (loads) {
      frame = loaded.record;
      frame.imageData = loaded.pixels.data();
      if (frame.timestamp == 0) frame.timestamp = Now();
    }
    running = running && sink(frame);
  }
}

void FileSource::Hold(bool on) {
  const std::lock_guard<std::mutex> guard(lock);
  again = on && !held;
  held = on;
  changed.notify_all();
}

void FileSource::Step(int frames) {
  const std::lock_guard<std::mutex> guard(lock);
  steps += frames;
  changed.notify_all();
}

QStringList FileSource::TakeProblems() {
  const std::lock_guard<std::mutex> guard(lock);
  QStringList taken;
  taken.swap(problems);
  return taken;
}

}  // namespace zynview
