// The viewer's window on a real screen, with a real keyboard.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QFileInfo>
#include <QMenu>
#include <QTimer>
#include <functional>

#include "support/Xdotool.h"
#include "zynview/Viewer.h"

namespace {

bool Type(const char* keys) {
  return Xdotool({QStringLiteral("key"), QString::fromLatin1(keys)}) == 0;
}

// Without a window manager the window under the mouse gets the keys, once it was clicked on.
bool ClickOn(const QWidget& widget) {
  const QPoint middle = widget.mapToGlobal(widget.rect().center());
  return Xdotool({QStringLiteral("mousemove"), QString::number(middle.x()), QString::number(middle.y()),
                  QStringLiteral("click"), QStringLiteral("1")}) == 0;
}

bool TypesUntil(const char* keys, const std::function<bool()>& comes) {
  for (int i = 0; i < 10; ++i) {
    if (!Type(keys)) return false;
    if (Comes(comes, 5000)) return true;  // a second press would take a late first one back
  }
  return false;
}

}  // namespace

TEST(MainWindow, hears_a_real_keyboard_on_the_screen) {
  Viewer viewer(Scene("--rate 20 --window 400x300"));
  ASSERT_TRUE(viewer.started);
  ASSERT_TRUE(Comes([&] { return viewer.Picture() && viewer.Picture()->isExposed(); }));
  ASSERT_TRUE(ClickOn(*viewer.window->centralWidget()));
  EXPECT_TRUE(TypesUntil("h", [&] { return viewer.IsOpen("analysis"); }));
  EXPECT_TRUE(TypesUntil("space", [&] { return viewer.Tells("paused"); }));
  EXPECT_TRUE(TypesUntil("ctrl+q", [&] { return !viewer.window->isVisible(); }));
}

// The picture has the keys until a menu is open.
TEST(MainWindow, menus_are_walked_by_the_keyboard_on_the_screen) {
  Viewer viewer(Scene("--rate 20 --window 400x300"));
  ASSERT_TRUE(viewer.started);
  ASSERT_TRUE(Comes([&] { return viewer.Picture() && viewer.Picture()->isExposed(); }));
  ASSERT_TRUE(ClickOn(*viewer.window->centralWidget()));
  const auto opened = [] { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); };
  ASSERT_TRUE(TypesUntil("alt+v", [&] { return opened() != nullptr; }));
  const QMenu* const view = opened();
  const QAction* const before = view->activeAction();
  EXPECT_TRUE(TypesUntil("Down", [&] { return view->activeAction() && view->activeAction() != before; }));
  EXPECT_TRUE(TypesUntil("Left", [&] { return opened() && opened() != view; }));
  EXPECT_TRUE(TypesUntil("Escape", [&] { return !opened(); }));
  EXPECT_FALSE(viewer.Tells("paused"));
}

// What is typed there must come into the name, and not to the viewer, which knows most of its letters as
// keys.
TEST(MainWindow, opens_a_file_whose_name_is_typed_on_the_screen) {
  const ViewerFiles files;
  const QString file = files.Grey("whole-program.png", 40, 30, 77);
  Viewer viewer(Scene("--rate 20 --window 400x300"));
  ASSERT_TRUE(viewer.started);
  ASSERT_TRUE(Comes([&] { return viewer.Picture() && viewer.Picture()->isExposed(); }));
  QTimer typist;  // within the dialog's own event loop
  int rounds = 0;
  QObject::connect(&typist, &QTimer::timeout, [&] {
    auto* dialog = viewer.window->findChild<QDialog*>();
    if (!dialog || !dialog->isVisible()) return;
    typist.stop();
    EXPECT_TRUE(ClickOn(*viewer.window->findChild<QWidget*>(QStringLiteral("fileNameEdit"))));
    Xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), file});
    Type("Return");
    ++rounds;
  });
  typist.start(300);
  // In case that this is not heard, neither the dialog stays for ever nor what it complains with.
  QTimer janitor;
  QObject::connect(&janitor, &QTimer::timeout, [] {
    if (QWidget* left = QApplication::activeModalWidget()) left->close();
  });
  janitor.start(30000);
  viewer.Choose("Open...");
  EXPECT_EQ(rounds, 1);
  EXPECT_TRUE(Comes([&] { return viewer.IsTitled("whole-program.png"); }, 10000))
      << viewer.window->windowTitle().toStdString();
  EXPECT_FALSE(viewer.Tells("saved")) << "P and W were letters";
}
