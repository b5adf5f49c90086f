// The viewer's window: files, menus, keys, settings, closing.
#include "apps/zynview/view/MainWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QThread>

#include "zynview/Viewer.h"

using zynview::Settings;

namespace {

QStringList SavedIn(const QString& folder, const char* pattern) {
  return QDir(folder).entryList({QString::fromLatin1(pattern)}, QDir::Files);
}

}  // namespace

TEST(MainWindow, shows_the_file_that_is_named_behind_it) {
  const ViewerFiles files;
  Viewer viewer({files.Grey("grey.png", 40, 30, 77)});
  ASSERT_TRUE(viewer.started) << viewer.problem.toStdString();
  EXPECT_TRUE(viewer.IsTitled("grey.png"));
  EXPECT_TRUE(viewer.IsTitled("Mono8 40 × 30"));
  EXPECT_TRUE(Comes([&] { return viewer.Tells("shown"); }));
}

TEST(MainWindow, takes_nothing_in_the_name_of_a_file_for_a_place_in_its_texts) {
  const ViewerFiles files;
  Viewer viewer({files.Grey("at %1 of %4.png", 40, 30, 77)});
  ASSERT_TRUE(viewer.started) << viewer.problem.toStdString();
  EXPECT_TRUE(viewer.IsTitled("at %1 of %4.png — Mono8 40 × 30"))
      << viewer.window->windowTitle().toStdString();
}

TEST(MainWindow, tells_which_file_cannot_be_read_and_stays_without_a_source) {
  const ViewerFiles files;
  Viewer viewer({files.Path("missing.png")});
  EXPECT_FALSE(viewer.started);
  EXPECT_TRUE(viewer.problem.contains(QStringLiteral("missing.png"))) << viewer.problem.toStdString();
  viewer.Press(Qt::Key_Space);  // nothing to pause
  viewer.Press(Qt::Key_P);
  viewer.window->close();
}

TEST(MainWindow, pauses_and_steps_by_keys) {
  const ViewerFiles files;
  for (const char* name : {"1.png", "2.png", "3.png"}) files.Grey(name, 8, 6, 10);
  Viewer viewer({files.Path(), QStringLiteral("--rate"), QStringLiteral("50")});
  ASSERT_TRUE(viewer.started);
  viewer.Press(Qt::Key_Space);
  EXPECT_TRUE(Comes([&] { return viewer.Tells("paused   frame"); }));
  EXPECT_TRUE(viewer.IsChecked("Pause"));
  // Three steps on are one round of three frames.
  QStringList seen;
  for (int i = 0; i < 3; ++i) {
    QString before;
    for (const QLabel* label : viewer.window->statusBar()->findChildren<QLabel*>()) {
      if (label->text().startsWith(QStringLiteral("paused"))) before = label->text();
    }
    viewer.Press(i == 1 ? Qt::Key_PageUp : Qt::Key_PageDown);
    EXPECT_TRUE(Comes([&] { return !viewer.Tells(before.toLatin1().constData()); })) << before.toStdString();
  }
  viewer.Press(Qt::Key_Space);
  EXPECT_FALSE(viewer.IsChecked("Pause"));
  EXPECT_TRUE(Comes([&] { return viewer.Tells("in "); }));
}

TEST(MainWindow, opens_its_panels_by_keys_and_by_the_menu) {
  Viewer viewer(Scene());
  ASSERT_TRUE(viewer.started);
  EXPECT_FALSE(viewer.IsOpen("analysis"));
  viewer.Press(Qt::Key_H);
  EXPECT_TRUE(viewer.IsOpen("analysis"));
  EXPECT_TRUE(viewer.IsChecked("Histogram and Statistics"));
  viewer.Choose("Histogram and Statistics");
  EXPECT_FALSE(viewer.IsOpen("analysis"));
  viewer.Press(Qt::Key_K, Qt::ControlModifier);
  EXPECT_TRUE(viewer.IsOpen("camera"));
  viewer.Choose("Camera Controls");
  EXPECT_FALSE(viewer.IsOpen("camera"));
}

TEST(MainWindow, begins_to_mark_a_region_and_ends_it) {
  Viewer viewer(Scene());
  viewer.Press(Qt::Key_R);
  EXPECT_TRUE(viewer.Tells("drag over the picture"));
  EXPECT_TRUE(viewer.IsChecked("Mark Region"));
  viewer.Press(Qt::Key_Escape);
  EXPECT_FALSE(viewer.Tells("drag over the picture"));
  EXPECT_FALSE(viewer.IsChecked("Mark Region"));
  Viewer marked(Scene("--region 10x10+5+5"));
  EXPECT_TRUE(marked.IsChecked("Mark Region"));
  marked.Choose("Mark Region");
  EXPECT_FALSE(marked.IsChecked("Mark Region"));
}

TEST(MainWindow, shows_the_keys_in_a_window_beside_it) {
  Viewer viewer(Scene());
  viewer.Press(Qt::Key_F1);
  const auto* help = viewer.window->findChild<QDialog*>();
  ASSERT_TRUE(help);
  EXPECT_TRUE(help->isVisible());
  EXPECT_FALSE(help->isModal());
}

// A name that is typed there is no row of commands to the viewer.
TEST(MainWindow, leaves_alone_what_is_typed_in_another_window_of_its_own) {
  Viewer viewer(Scene());
  viewer.Press(Qt::Key_F1);
  auto* help = viewer.window->findChild<QDialog*>();
  ASSERT_TRUE(help && help->windowHandle());
  for (const int key : {Qt::Key_H, Qt::Key_Space, Qt::Key_O}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(help->windowHandle(), &press);
  }
  EXPECT_FALSE(viewer.IsOpen("analysis"));
  EXPECT_FALSE(viewer.IsChecked("Pause"));
  EXPECT_FALSE(viewer.IsChecked("Overlays"));
}

TEST(MainWindow, switches_what_the_display_draws_over_the_picture) {
  Viewer viewer(Scene("--status"));
  EXPECT_TRUE(viewer.IsChecked("Status Line"));
  for (const char* label : {"Status Line", "Information", "Overlays", "Mark Exposure"}) {
    const bool before = viewer.IsChecked(label);
    viewer.Choose(label);
    EXPECT_NE(viewer.IsChecked(label), before) << label;
    viewer.Choose(label);
    EXPECT_EQ(viewer.IsChecked(label), before) << label;
  }
}

TEST(MainWindow, saves_picture_and_frame_in_the_folder_that_was_said) {
  const ViewerFiles out;
  Viewer viewer(Scene("--format BayerRG12 --rate 50") + QStringList{QStringLiteral("--folder"), out.Path()});
  ASSERT_TRUE(viewer.started);
  viewer.Press(Qt::Key_P);
  viewer.Press(Qt::Key_W);
  EXPECT_TRUE(Comes([&] { return SavedIn(out.Path(), "*.png").size() == 1; }));
  EXPECT_TRUE(Comes([&] { return SavedIn(out.Path(), "*.raw").size() == 1; }));
  EXPECT_EQ(SavedIn(out.Path(), "*.json").size(), 1);
  EXPECT_EQ(QImage(out.Path(SavedIn(out.Path(), "*.png").value(0).toLatin1().constData())).size(),
            QSize(64, 48));
  EXPECT_TRUE(viewer.Tells("saved zynview-"));
}

TEST(MainWindow, changes_the_colours_by_keys) {
  Viewer viewer(Scene("--format BayerRG12"));
  EXPECT_TRUE(viewer.Tells("demosaicing 0"));
  viewer.Press(Qt::Key_M);
  EXPECT_TRUE(viewer.Tells("demosaicing 1"));
  viewer.Press(Qt::Key_G);
  EXPECT_TRUE(viewer.Tells("gain 1.25"));
  viewer.Press(Qt::Key_R, Qt::ShiftModifier);
  EXPECT_FALSE(viewer.Tells("gain"));
}

TEST(MainWindow, shows_what_is_dropped_on_it_and_on_the_picture) {
  const ViewerFiles files;
  Viewer viewer(Scene());
  EXPECT_TRUE(viewer.Drop(files.Grey("first.png", 8, 6, 10), viewer.window.get()));
  EXPECT_TRUE(Comes([&] { return viewer.IsTitled("first.png"); }));
  EXPECT_TRUE(viewer.Drop(files.Grey("second.png", 8, 6, 10), viewer.Picture()));
  EXPECT_TRUE(Comes([&] { return viewer.IsTitled("second.png"); }));
}

TEST(MainWindow, keeps_its_frames_when_what_is_dropped_is_no_picture) {
  const ViewerFiles files;
  Viewer viewer(Scene());
  viewer.Drop(files.Write("broken.png", "no picture"), viewer.window.get());
  EXPECT_TRUE(Comes([&] { return viewer.Tells("broken.png"); }));
  EXPECT_TRUE(viewer.IsTitled("test scene"));
}

TEST(MainWindow, offers_what_was_opened_last) {
  const ViewerFiles files, place;
  const QString file = files.Grey("a.png", 8, 6, 10), other = files.Grey("b.png", 9, 6, 10);
  {
    Viewer viewer({file}, Settings::InFile(place.Path("zynview.ini")));
    viewer.window->close();
  }
  {
    Viewer viewer({other}, Settings::InFile(place.Path("zynview.ini")));
    viewer.window->close();
  }
  Viewer viewer(Scene(), Settings::InFile(place.Path("zynview.ini")));
  QMenu* recent = nullptr;
  for (QMenu* menu : viewer.window->menuBar()->findChildren<QMenu*>()) {
    if (menu->title() == QStringLiteral("Recent")) recent = menu;
  }
  ASSERT_TRUE(recent);
  Q_EMIT recent->aboutToShow();
  ASSERT_GE(recent->actions().size(), 3);
  EXPECT_TRUE(recent->actions()[0]->text().endsWith(QStringLiteral("b.png")));
  EXPECT_TRUE(recent->actions()[1]->text().endsWith(QStringLiteral("a.png")));
  recent->actions()[1]->trigger();
  EXPECT_TRUE(Comes([&] { return viewer.IsTitled("a.png"); }));
  recent->actions().last()->trigger();
  EXPECT_TRUE(Settings::InFile(place.Path("zynview.ini")).recent.Paths().isEmpty());
}

TEST(MainWindow, comes_back_as_it_was_left) {
  const ViewerFiles place;
  const QString file = place.Path("new/zynview.ini");  // the first start has no folder for it either
  QSize size;
  {
    Viewer viewer(Scene(), Settings::InFile(file));
    viewer.window->resize(700, 500);
    viewer.Press(Qt::Key_H);
    viewer.Choose("Information");
    QCoreApplication::processEvents();
    size = viewer.window->size();
    EXPECT_FALSE(QFileInfo::exists(file)) << "written at the end";
    EXPECT_TRUE(viewer.window->close());
    EXPECT_TRUE(QFileInfo::exists(file));
  }
  Viewer viewer(Scene(), Settings::InFile(file));
  EXPECT_EQ(viewer.window->size(), size);
  EXPECT_TRUE(viewer.IsOpen("analysis"));
  EXPECT_FALSE(viewer.IsOpen("camera"));
  EXPECT_TRUE(viewer.IsChecked("Information"));
  EXPECT_FALSE(viewer.IsChecked("Status Line"));
}

TEST(MainWindow, writes_no_settings_where_none_are_wanted) {
  Viewer viewer(Scene());
  EXPECT_FALSE(viewer.Entry("OpenGL from the Next Start"));
  const ViewerFiles place;
  Viewer keeping(Scene(), Settings::InFile(place.Path("zynview.ini")));
  keeping.Choose("OpenGL from the Next Start");
  EXPECT_TRUE(Settings::InFile(place.Path("zynview.ini")).opengl);
}

// The next one comes in a minute and a half.
TEST(MainWindow, saves_the_frame_of_a_slow_source_that_is_seen) {
  const ViewerFiles files, out;
  files.Grey("1.png", 8, 6, 20);
  files.Grey("2.png", 8, 6, 90);
  Viewer viewer({files.Path(), QStringLiteral("--rate"), QStringLiteral("0.01"), QStringLiteral("--folder"),
                 out.Path()});
  ASSERT_TRUE(viewer.started);
  ASSERT_TRUE(Comes([&] { return viewer.Tells("in 0.") || viewer.Tells("in 1.") || viewer.Tells("in 2."); }));
  viewer.Press(Qt::Key_W);
  EXPECT_TRUE(Comes([&] { return !SavedIn(out.Path(), "*.raw").isEmpty(); }));
  QFile raw(out.folder.filePath(SavedIn(out.Path(), "*.raw").value(0)));
  ASSERT_TRUE(raw.open(QIODevice::ReadOnly));
  EXPECT_EQ(raw.readAll(), QByteArray(8 * 6, char(20)));
}

TEST(MainWindow, gives_the_picture_the_size_that_is_said) {
  for (const char* more : {"--window 400x300", "--bare --window 200x150"}) {
    Viewer viewer(Scene(more));
    ASSERT_TRUE(viewer.started);
    const QSize wanted =
        QString::fromLatin1(more).endsWith(QStringLiteral("200x150")) ? QSize(200, 150) : QSize(400, 300);
    EXPECT_TRUE(Comes([&] { return viewer.Picture() && viewer.Picture()->size() == wanted; }))
        << more << ": " << viewer.Picture()->width() << " x " << viewer.Picture()->height();
  }
}

TEST(MainWindow, has_neither_menu_nor_status_bar_when_it_is_bare) {
  Viewer viewer(Scene("--bare --window 200x150"));
  EXPECT_FALSE(viewer.window->statusBar()->isVisible());
  EXPECT_TRUE(viewer.window->menuBar()->actions().isEmpty());
  viewer.Press(Qt::Key_H);
  EXPECT_TRUE(viewer.IsOpen("analysis")) << "the keys are there";
}

TEST(MainWindow, closes_in_mid_stream) {
  const ViewerFiles files;  // a picture may yet be saved
  for (int i = 0; i < 10; ++i) {
    Viewer viewer(Scene("--rate 0") << QStringLiteral("--folder") << files.Path());
    ASSERT_TRUE(viewer.started);
    if (i % 2) viewer.Press(Qt::Key_H);
    for (int events = 0; events < i; ++events) QCoreApplication::processEvents();
    if (i % 3 == 0) viewer.Press(Qt::Key_P);
    i % 2 ? viewer.Press(Qt::Key_Q, Qt::ControlModifier) : static_cast<void>(viewer.window->close());
    EXPECT_FALSE(viewer.window->isVisible());
  }
}

TEST(MainWindow, closes_while_a_file_is_being_opened) {
  const ViewerFiles files;
  const QString file = files.Grey("a.png", 800, 600, 10);
  for (int i = 0; i < 5; ++i) {
    Viewer viewer(Scene());
    viewer.Drop(file, viewer.window.get());
    for (int events = 0; events < i; ++events) QCoreApplication::processEvents();
    viewer.window->close();
  }
}

// The window goes with an answer under way: it has been opened, and nobody has heard of it yet.
TEST(MainWindow, goes_when_a_file_has_just_been_opened) {
  const ViewerFiles files;
  const QString file = files.Grey("a.png", 80, 60, 10);
  for (int i = 0; i < 5; ++i) {
    Viewer viewer(Scene());
    viewer.Drop(file, viewer.window.get());
    QThread::msleep(100);
    viewer.window->close();
  }
}
