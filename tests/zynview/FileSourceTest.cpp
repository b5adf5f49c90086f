// Files as a sequence: played, held, stepped through.
#include "apps/zynview/sources/FileSource.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <tuple>

#include "ZynPixelFormat.h"
#include "zynview/ViewerFiles.h"

using zynview::FileSource;
using zynview::OwnFrame;

namespace {

constexpr double kFast = 0;      // frames per second: as fast as it goes
constexpr double kNever = 1e-3;  // no second frame within a test

// Collects what a source delivers on a thread of its own.
class Player {
 public:
  explicit Player(FileSource* source) : thread([this, source] { Play(source); }) {}
  ~Player() {
    stop = true;
    thread.join();
  }

  // The first `count` image numbers.
  std::vector<uint64_t> Wait(std::size_t count) {
    std::unique_lock<std::mutex> guard(lock);
    changed.wait_for(guard, std::chrono::seconds(20), [&] { return seen.size() >= count; });
    return {seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(std::min(count, seen.size()))};
  }
  std::vector<uint8_t> levels;  // the first pixel of each, after `Wait`

 private:
  void Play(FileSource* source) {
    source->Run([this](const ZynImage& frame) {
      const std::lock_guard<std::mutex> guard(lock);
      if (frame.imageData) {
        seen.push_back(frame.imageID);
        levels.push_back(*frame.imageData);
        changed.notify_all();
      }
      return !stop;
    });
  }

  std::mutex lock;
  std::condition_variable changed;
  std::vector<uint64_t> seen;
  std::atomic<bool> stop{false};
  std::thread thread;
};

using IDs = std::vector<uint64_t>;

// Pictures of the sizes 1, 2, 3, ... with that level.
void WritePictures(const ViewerFiles& files, int count) {
  for (int i = 1; i <= count; ++i)
    files.Grey(QStringLiteral("%1.png").arg(i).toLatin1().constData(), i, 1, i);
}

}  // namespace

TEST(FileSource, plays_the_frames_of_a_folder_over_and_over) {
  const ViewerFiles files;
  WritePictures(files, 3);
  FileSource source({files.Path()}, {}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error)) << error.toStdString();
  EXPECT_EQ(source.Format().width, 1u);
  EXPECT_TRUE(source.Description().contains(QStringLiteral("(3 frames)")));
  Player player(&source);
  EXPECT_EQ(player.Wait(7), (IDs{1, 2, 3, 1, 2, 3, 1}));
}

TEST(FileSource, keeps_the_rate) {
  const ViewerFiles files;
  WritePictures(files, 2);
  FileSource source({files.Path()}, {}, 20);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  const auto start = std::chrono::steady_clock::now();
  {
    Player player(&source);
    player.Wait(5);
  }
  // Four periods of 50 ms; the upper bound is for a busy machine.
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took.count(), 0.19);
  EXPECT_LT(took.count(), 5);
}

TEST(FileSource, shows_a_single_frame_slowly_when_no_rate_is_said) {
  const ViewerFiles files;
  WritePictures(files, 1);
  QString error;
  // The time of four periods: 200 ms each, or 20 ms where a rate is said.
  for (const auto& [rate, least, most] : {std::make_tuple(std::optional<double>(), 0.78, 10.0),
                                          std::make_tuple(std::optional<double>(50), 0.07, 0.7)}) {
    FileSource source({files.Path()}, {}, rate);
    ASSERT_TRUE(source.Open(&error));
    const auto start = std::chrono::steady_clock::now();
    {
      Player player(&source);
      EXPECT_EQ(player.Wait(5), (IDs{1, 1, 1, 1, 1}));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took.count(), least);
    EXPECT_LT(took.count(), most);
  }
}

TEST(FileSource, plays_a_sequence_at_the_usual_rate_when_none_is_said) {
  const ViewerFiles files;
  WritePictures(files, 2);
  FileSource source({files.Path()}, {}, {});
  QString error;
  ASSERT_TRUE(source.Open(&error));
  const auto start = std::chrono::steady_clock::now();
  {
    Player player(&source);
    player.Wait(11);
  }
  // Ten periods of 40 ms; at the rate of a single frame they take 2 s.
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took.count(), 0.38);
  EXPECT_LT(took.count(), 1.9);
}

TEST(FileSource, tells_of_bytes_that_are_no_whole_frame) {
  const ViewerFiles files;
  const QString rest = files.Write("rest of %2.bin", "abcde"), whole = files.Write("whole.bin", "ab");
  FileSource source({rest, whole}, {ZYN_PIXEL_MONO8, QSize(2, 1), 0}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  EXPECT_EQ(source.Count(), 3u);
  const QStringList problems = source.TakeProblems();
  ASSERT_EQ(problems.size(), 1);
  EXPECT_TRUE(problems[0].contains(rest) && problems[0].contains(QStringLiteral("last 1 bytes")))
      << problems[0].toStdString();
  EXPECT_EQ(source.Remarks(), problems);
}

TEST(FileSource, names_all_files_that_it_reads) {
  const ViewerFiles files;
  const QString picture = files.Grey("a.png", 1, 1, 0), raw = files.Write("b.raw", "a");
  const QString sidecar = files.Write("b.json", R"({"pixelFormat": "Mono8", "width": 1, "height": 1})");
  FileSource source({picture, sidecar}, {}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error)) << error.toStdString();
  EXPECT_EQ(source.Inputs(), (QStringList{picture, raw, sidecar}));
}

TEST(FileSource, stays_on_its_frame_while_it_is_held_and_steps_both_ways) {
  const ViewerFiles files;
  WritePictures(files, 3);
  FileSource source({files.Path()}, {}, kNever);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  EXPECT_TRUE(source.CanHold());
  Player player(&source);
  EXPECT_EQ(player.Wait(1), (IDs{1}));
  source.Hold(true);
  EXPECT_EQ(player.Wait(2), (IDs{1, 1})) << "once more, for whoever keeps it";
  source.Step(1);
  EXPECT_EQ(player.Wait(3), (IDs{1, 1, 2}));
  source.Step(-1);
  EXPECT_EQ(player.Wait(4), (IDs{1, 1, 2, 1}));
  source.Step(-1);
  EXPECT_EQ(player.Wait(5), (IDs{1, 1, 2, 1, 3})) << "before the first one is the last one";
  source.Step(1);
  EXPECT_EQ(player.Wait(6), (IDs{1, 1, 2, 1, 3, 1}));
}

TEST(FileSource, skips_what_cannot_be_read_and_names_it_once) {
  const ViewerFiles files;
  WritePictures(files, 4);
  const QString broken = files.Write("2.png", "broken"), first = files.Write("1.png", "");
  FileSource source({files.Path()}, {}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  EXPECT_EQ(source.Format().width, 3u) << "the first one that can be read";
  Player player(&source);
  EXPECT_EQ(player.Wait(5), (IDs{3, 4, 3, 4, 3}));
  const QStringList problems = source.TakeProblems();
  ASSERT_EQ(problems.size(), 2);
  EXPECT_TRUE(problems[0].contains(first) && problems[1].contains(broken));
  EXPECT_TRUE(source.TakeProblems().isEmpty());
}

TEST(FileSource, steps_over_what_cannot_be_read_in_its_direction) {
  const ViewerFiles files;
  WritePictures(files, 4);
  files.Write("3.png", "broken");
  FileSource source({files.Path()}, {}, kNever);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  source.Hold(true);
  Player player(&source);
  player.Wait(2);
  source.Step(2);
  EXPECT_EQ(player.Wait(3).back(), 4u);
  source.Step(-1);
  EXPECT_EQ(player.Wait(4).back(), 2u);
}

TEST(FileSource, says_why_nothing_can_be_opened) {
  const ViewerFiles files;
  QString error;
  EXPECT_FALSE(FileSource({files.Path()}, {}, kFast).Open(&error));
  EXPECT_TRUE(error.contains(files.Path())) << error.toStdString();
  const QString broken = files.Write("1.png", "broken");
  files.Write("2.png", "broken");
  error.clear();
  EXPECT_FALSE(FileSource({files.Path()}, {}, kFast).Open(&error));
  EXPECT_TRUE(error.contains(broken) && error.contains(QStringLiteral("1 more"))) << error.toStdString();
}

TEST(FileSource, survives_the_files_going_away) {
  const ViewerFiles files;
  WritePictures(files, 2);
  FileSource source({files.Path()}, {}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  ASSERT_TRUE(QDir(files.Path()).removeRecursively());
  Player player(&source);
  while (source.TakeProblems().isEmpty()) std::this_thread::yield();
}

TEST(FileSource, counts_the_frames_of_all_files) {
  const ViewerFiles files;
  const QString two = files.Write("two.bin", "abcd"), one = files.Write("one.bin", "ef");
  FileSource source({two, one}, {ZYN_PIXEL_MONO8, QSize(2, 1), 0}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  ASSERT_EQ(source.Count(), 3u);
  OwnFrame frame;
  ASSERT_TRUE(source.Load(2, &frame, &error));
  EXPECT_EQ(frame.pixels, (std::vector<uint8_t>{'e', 'f'}));
  EXPECT_EQ(frame.record.imageID, 3u);
  EXPECT_FALSE(source.Load(3, &frame, &error));
  EXPECT_EQ(source.NameOf(0), QStringLiteral("two-000001"));
  EXPECT_EQ(source.NameOf(1), QStringLiteral("two-000002"));
  EXPECT_EQ(source.NameOf(2), QStringLiteral("one"));
}

TEST(FileSource, gives_no_two_frames_the_same_name) {
  const ViewerFiles files, others;
  FileSource source({files.Grey("a.png", 1, 1, 0), files.Grey("a.bmp", 1, 1, 0), files.Grey("b.png", 1, 1, 0),
                     others.Grey("b.png", 1, 1, 0), files.Grey("c.png", 1, 1, 0)},
                    {}, kFast);
  QString error;
  ASSERT_TRUE(source.Open(&error));
  QStringList names;
  for (uint64_t i = 0; i < source.Count(); ++i) names << source.NameOf(i);
  EXPECT_EQ(names,
            (QStringList{QStringLiteral("a.png"), QStringLiteral("a.bmp"), QStringLiteral("b.png-000003"),
                         QStringLiteral("b.png-000004"), QStringLiteral("c")}));
}
