// A host that sends commands as fast as it can while frames stream and the user works: nothing blocks, every
// answer makes sense, and the user is heard all the time.
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "tests/display/PictureFixture.h"

namespace display_test {

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

// Ends the process when it does not come to an end: a deadlock fails, it does not hang.
class Watchdog {
 public:
  explicit Watchdog(std::chrono::seconds patience)
      : thread([this, patience] {
          std::unique_lock<std::mutex> hold(lock);
          if (ended.wait_for(hold, patience, [this] { return over; })) return;
          std::fprintf(stderr, "the display hangs\n");
          std::abort();
        }) {}
  ~Watchdog() {
    {
      std::lock_guard<std::mutex> hold(lock);
      over = true;
    }
    ended.notify_all();
    thread.join();
  }

 private:
  std::mutex lock;  // guards `over`
  std::condition_variable ended;
  bool over = false;
  std::thread thread;
};

// What an answer may be.
enum class Answer { kZero, kOne, kEither };

struct Command {
  const char* name;
  QTD::ARGUMENTS args;
  Answer answer;
};

// One of each, of all families.
std::vector<Command> AllCommands(Receiver& second) {
  const std::string receiver =
      QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayCommand*>(&second)));
  return {
      {"cmd.display.view.zoom.in", {}, Answer::kEither},
      {"cmd.display.overlay.text.add",
       {{"objectID", "a"},
        {"text.text", "one\ntwo"},
        {"text.pos.x", "9"},
        {"text.pos.y", "9"},
        {"cs", "img"}},
       Answer::kOne},
      {"cmd.display.view.zoom.out", {{"zoom.coef", "1.5"}}, Answer::kEither},
      {"cmd.display.view.fit", {{"mode", "1"}}, Answer::kOne},
      {"cmd.display.overlay.rect.add",
       {{"objectID", "b"},
        {"rect.x", "5"},
        {"rect.y", "6"},
        {"rect.w", "70"},
        {"rect.h", "80"},
        {"cs", "img"}},
       Answer::kOne},
      {"cmd.display.view.scale", {{"scale", "0.75"}}, Answer::kEither},
      {"cmd.display.view.at", {{"pos.x", "0.4"}, {"pos.y", "0.6"}}, Answer::kOne},
      {"cmd.display.view.translate",
       {{"pos.x", "10"}, {"pos.y", "20"}, {"cs.src", "win"}, {"cs.dst", "img"}},
       Answer::kOne},
      {"cmd.display.view.image", {}, Answer::kOne},
      {"cmd.display.view.status", {}, Answer::kOne},
      {"cmd.display.view.info", {}, Answer::kOne},
      {"cmd.display.view.nofication", {{"flags", "7"}}, Answer::kOne},
      {"cmd.display.overlay.params", {{"text.clr", "255"}}, Answer::kOne},
      {"cmd.display.overlay.text.add",
       {{"text.text", "placed"}, {"objectID", "c"}, {"text.pos.x", "4"}, {"text.pos.y", "-1"}},
       Answer::kOne},
      {"cmd.display.overlay.add", {{"type", "text"}, {"text.text", "x"}}, Answer::kZero},
      {"cmd.display.overlay.text.del", {{"objectID", "c"}}, Answer::kEither},
      {"cmd.display.overlay.rect.del", {{"objectID", "b"}}, Answer::kEither},
      {"cmd.display.overlay.del", {{"objectID", "nothing"}}, Answer::kZero},
      {"cmd.parameter.set", {{"name", "display.view.bgcolor"}, {"value", "1122867"}}, Answer::kZero},
      {"cmd.parameter.get", {{"name", "display.view.scale"}}, Answer::kZero},
      {"cmd.system.notification.add", {{"proc", receiver}}, Answer::kOne},
      {"cmd.image.rebuild", {}, Answer::kOne},
      {"cmd.system.notification.del", {{"proc", receiver}}, Answer::kOne},
      {"cmd.system.menu.unknown", {}, Answer::kZero},
      {"cmd.display.view.unknown", {}, Answer::kZero},
  };
}

// When the GUI thread handled an event, and how long the next one took to come.
class Gaps : public QObject {
 public:
  bool eventFilter(QObject*, QEvent*) override {
    const Clock::time_point now = Clock::now();
    if (last != Clock::time_point()) longest = std::max(longest, now - last);
    last = now;
    return false;
  }
  Clock::duration longest{};

 private:
  Clock::time_point last;
};

// A generous bound: the machine may be busy, and sanitizers slow. A GUI thread that floods of commands kept
// from its locks would not come to an event for as long as they last.
constexpr double kLongestGap = 5000;

constexpr int kMilliseconds = 2500;
constexpr std::chrono::seconds kPatience{60};
constexpr int kLeastTurns = 24;  // each kind of turn three times, however long it takes

class Saturation : public PictureTest {
 protected:
  ~Saturation() override { Stop(); }

  void Start(const std::function<void()>& step) {
    threads.emplace_back([this, step] {
      while (!stop) step();
    });
  }
  // Threads may be waiting for this one.
  void Stop() {
    stop = true;
    std::atomic<bool> joined{false};
    std::thread joiner([&] {
      for (std::thread& thread : threads) thread.join();
      joined = true;
    });
    EXPECT_TRUE(WaitFor([&] { return joined.load(); }, 60000));
    joiner.join();
    threads.clear();
  }

  void StreamFrames() {
    Start([this, id = uint64_t{0}]() mutable {
      ZynImage frame = image.record;
      frame.imageID = ++id;
      if (display->DisplayVideo(&frame) != 0) ++wrong;
    });
  }

  // All commands again and again. A wrong answer is noted with its name.
  void FloodCommands(Receiver& second) {
    const std::vector<Command> commands = AllCommands(second);
    Start([this, commands] {
      for (const Command& command : commands) {
        if (stop) return;
        QTD::ARGUMENTS args = command.args;
        const uint32_t answer = display->RunCommand(command.name, &args);
        ++sent;
        if (IsSane(command, answer, args)) continue;
        std::lock_guard<std::mutex> guard(lock);
        insane[command.name] = answer;
      }
    });
  }
  static bool IsSane(const Command& command, uint32_t answer, const QTD::ARGUMENTS& args) {
    if (answer > 1) return false;
    if (command.answer != Answer::kEither && answer != (command.answer == Answer::kOne ? 1u : 0u))
      return false;
    if (std::string(command.name) != "cmd.display.view.translate") return true;
    // Wherever the view stood: near or on the picture, never an absurd number.
    const double x = std::atof(args.at("pos.x").c_str());
    return x > -1e5 && x < 1e5 && args.count("result") == 1;
  }

  // One thing after the other that users do.
  void Use(int turn) {
    const int x = 20 + turn % 60, y = 30 + turn % 50;
    switch (turn % 8) {
      case 0:
      case 1: {
        QWheelEvent event(QPointF(x, y), QPointF(x, y), QPoint(), QPoint(0, turn % 2 ? 120 : -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(Window(), &event);
        return;
      }
      case 2:
        return Mouse(QEvent::MouseButtonPress, Qt::LeftButton, x, y);
      case 3:
        return Mouse(QEvent::MouseMove, Qt::LeftButton, x + 7, y - 9);
      case 4:
        return Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, x + 7, y - 9);
      case 5:
        return Mouse(QEvent::MouseButtonDblClick, Qt::LeftButton, x, y);
      default: {
        constexpr int kKeys[] = {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Left,
                                 Qt::Key_Down, Qt::Key_0,     Qt::Key_C};
        QKeyEvent event(QEvent::KeyPress, kKeys[turn / 8 % 6], Qt::NoModifier);
        QCoreApplication::sendEvent(Window(), &event);
      }
    }
  }
  void Mouse(QEvent::Type type, Qt::MouseButton button, int x, int y) {
    const bool move = type == QEvent::MouseMove;
    QMouseEvent event(type, QPointF(x, y), QPointF(x, y), move ? Qt::NoButton : button,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : button, Qt::NoModifier);
    QCoreApplication::sendEvent(Window(), &event);
  }

  // The user's turns while everything else runs. Answers the longest time that one of them took.
  double UseForAWhile() {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(kMilliseconds);
    Clock::duration longest{};
    int turn = 0;
    while (Clock::now() < end || (turn < kLeastTurns && Clock::now() < end + kPatience)) {
      const Clock::time_point begin = Clock::now();
      Use(turn++);
      QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
      longest = std::max(longest, Clock::now() - begin);
    }
    turns = turn;
    EXPECT_GE(turn, kLeastTurns) << "what the host asks for keeps the user waiting";
    return Milliseconds(longest);
  }

  // After all that the view does what it is told, and nothing was left behind.
  void ExpectAnswers() {
    EXPECT_EQ(insane, (std::map<std::string, uint32_t>()));
    EXPECT_EQ(wrong, 0);
    Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, 20, 30);
    ASSERT_EQ(Run("cmd.display.view.fit", {{"mode", "3"}}), 1u);
    EXPECT_DOUBLE_EQ(Screen()->Scale(), 1);
    ASSERT_EQ(Run("cmd.display.view.zoom.in"), 1u);
    EXPECT_EQ(Screen()->zoomPercent(), 125);
    ASSERT_EQ(Run("cmd.display.view.at", {{"pos.x", "0.5"}, {"pos.y", "0.5"}}), 1u);
    QTD::ARGUMENTS args{{"pos.x", "500"}, {"pos.y", "400"}, {"cs.src", "img"}, {"cs.dst", "win"}};
    ASSERT_EQ(Run("cmd.display.view.translate", &args), 1u);
    EXPECT_NEAR(std::atof(args["pos.x"].c_str()), Window()->width() / 2.0, 1e-5);
    EXPECT_NEAR(std::atof(args["pos.y"].c_str()), Window()->height() / 2.0, 1e-5);
    EXPECT_LE(Objects().count(), 5) << "three overlays of the host, the status line, the information";
    const size_t before = receiver.Images();
    EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
    EXPECT_TRUE(WaitForImages(before + 1));
  }

  std::atomic<bool> stop{false};
  std::atomic<int> wrong{0};
  std::atomic<int64_t> sent{0};
  int turns = 0;
  std::vector<std::thread> threads;
  std::mutex lock;  // guards `insane`
  std::map<std::string, uint32_t> insane;
};

}  // namespace

TEST_F(Saturation, a_flood_of_commands_leaves_the_user_in_charge) {
  const Watchdog watchdog(std::chrono::seconds(180));
  Show();
  Gaps gaps;
  Receiver second;
  StreamFrames();
  FloodCommands(second);
  qApp->installEventFilter(&gaps);
  const double longestTurn = UseForAWhile();
  qApp->removeEventFilter(&gaps);
  Stop();
  RecordProperty("commands", QTD::ToText(static_cast<long long>(sent.load())));
  RecordProperty("longest_gap_ms", QTD::ToText(Milliseconds(gaps.longest)));
  std::printf("%lld commands, %d turns of the user, longest gap %.1f ms, longest turn %.1f ms\n",
              static_cast<long long>(sent.load()), turns, Milliseconds(gaps.longest), longestTurn);
  EXPECT_GT(sent, 100);
  EXPECT_LT(Milliseconds(gaps.longest), kLongestGap);
  EXPECT_LT(longestTurn, 2 * kLongestGap) << "many events";
  display->DelNotification(&second);
  ExpectAnswers();
}

TEST_F(Saturation, commands_from_four_threads_and_from_receivers_end) {
  const Watchdog watchdog(std::chrono::seconds(180));
  Show();
  Receiver second[4];
  StreamFrames();
  // Host code in a notification runs commands, too.
  receiver.OnMessage([this](const std::string&) {
    QTD::ARGUMENTS args{{"pos.x", "1"}, {"pos.y", "2"}, {"cs.src", "win"}, {"cs.dst", "img"}};
    display->RunCommand("cmd.display.view.translate", &args);
    display->RunCommand("cmd.display.view.zoom.out", nullptr);
  });
  for (Receiver& one : second) FloodCommands(one);
  UseForAWhile();
  Stop();
  receiver.OnMessage(nullptr);
  EXPECT_GT(sent, 100);
  for (Receiver& one : second) display->DelNotification(&one);
  Settle();
  ExpectAnswers();
}

}  // namespace display_test
