// The viewer's window while its camera goes away.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QPushButton>

#include "zynview/Simulator.h"
#include "zynview/Viewer.h"

namespace {

// What nobody notices who uses the window. One word to a camera that has gone takes 2.5 seconds.
constexpr int kUnnoticed = 2200;

QLabel* NoticeOf(const Viewer& viewer) {
  return viewer.window->findChild<QLabel*>(QStringLiteral("noticeText"));
}

bool IsTold(const Viewer& viewer) {
  const QLabel* notice = NoticeOf(viewer);
  return notice && notice->isVisible() && notice->text().contains(QStringLiteral("does not answer any more"));
}

struct LostCamera : testing::Test {
  Simulator simulator;
  Viewer viewer{{QStringLiteral("--camera"), Simulator::Address()}};

  LostCamera() {
    EXPECT_TRUE(viewer.started) << viewer.problem.toStdString();
    viewer.Press(Qt::Key_K, Qt::ControlModifier);
    EXPECT_TRUE(Comes([this] { return Formats()->count() > 0; }));
    EXPECT_TRUE(Comes([this] { return viewer.Tells("in ") && !viewer.Tells("in 0.0"); }));
    EXPECT_FALSE(IsTold(viewer));
  }
  QComboBox* Formats() const { return viewer.window->findChild<QComboBox*>(QStringLiteral("formats")); }
  QDoubleSpinBox* Exposure() const { return viewer.window->findChild<QDoubleSpinBox*>(); }
};

}  // namespace

TEST_F(LostCamera, is_told_plainly_while_the_window_stays_at_hand) {
  simulator.Vanish();
  Exposure()->setValue(4321);  // asks a camera that has gone
  const qint64 longest = LongestStandstillUntil([this] { return IsTold(viewer); });
  EXPECT_GE(longest, 0) << "it is told";
  EXPECT_LT(longest, kUnnoticed);
  EXPECT_TRUE(viewer.IsTitled("lost"));
  EXPECT_TRUE(viewer.Tells("camera lost"));
  EXPECT_FALSE(Exposure()->isEnabled());
}

TEST_F(LostCamera, comes_back_by_the_button_of_the_notice) {
  simulator.Vanish();
  ASSERT_TRUE(Comes([this] { return IsTold(viewer); }));
  Simulator again;
  auto* button = NoticeOf(viewer)->parentWidget()->findChild<QPushButton*>();
  ASSERT_TRUE(button);
  button->click();
  EXPECT_TRUE(Comes([this] { return !viewer.IsTitled("lost"); }));
  EXPECT_FALSE(IsTold(viewer));
  EXPECT_TRUE(Comes([this] { return viewer.Tells("in ") && !viewer.Tells("in 0.0"); })) << "frames come";
  EXPECT_TRUE(Comes([this] { return Exposure()->isEnabled(); }));
}

TEST_F(LostCamera, gives_way_to_a_file) {
  const ViewerFiles files;
  simulator.Vanish();
  // Before the loss is known: the file is shown, and nobody waits for the camera's leave.
  viewer.Drop(files.Grey("a.png", 8, 6, 10), viewer.window.get());
  const qint64 longest = LongestStandstillUntil([this] { return viewer.IsTitled("a.png"); });
  EXPECT_GE(longest, 0);
  EXPECT_LT(longest, kUnnoticed);
  EXPECT_FALSE(IsTold(viewer));
}

TEST_F(LostCamera, does_not_hold_up_a_change_of_the_pixel_format) {
  simulator.Vanish();
  const int other = Formats()->findText(QStringLiteral("Mono16"));
  ASSERT_GE(other, 0);
  Formats()->setCurrentIndex(other);
  Q_EMIT Formats()->activated(other);
  const qint64 longest = LongestStandstillUntil([this] { return IsTold(viewer); });
  EXPECT_GE(longest, 0);
  EXPECT_LT(longest, kUnnoticed);
}

TEST_F(LostCamera, does_not_hold_up_the_closing_of_the_window) {
  simulator.Vanish();
  QElapsedTimer clock;
  clock.start();
  EXPECT_TRUE(viewer.window->close());
  EXPECT_FALSE(viewer.window->isVisible());
  EXPECT_LT(clock.elapsed(), kUnnoticed);
}

// The control for the tests above: the same while the camera is there.
TEST_F(LostCamera, is_told_of_none_that_answers) {
  const int other = Formats()->findText(QStringLiteral("Mono16"));
  Formats()->setCurrentIndex(other);
  Q_EMIT Formats()->activated(other);
  EXPECT_TRUE(Comes([this] { return viewer.IsTitled("Mono16"); }));
  Comes([] { return false; }, 2000);  // the figures are those of the new format from here on
  EXPECT_TRUE(Comes([this] { return viewer.Tells("in ") && !viewer.Tells("in 0.0"); }));
  EXPECT_TRUE(Comes([this] { return Formats()->currentText() == QStringLiteral("Mono16"); }));
  Exposure()->setValue(4321);
  Comes([this] { return IsTold(viewer); }, 1000);
  EXPECT_FALSE(IsTold(viewer));
}
