// The keys of display and viewer, in the window and for a terminal.
#include "apps/zynview/view/HelpWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QSet>

#include "apps/zynview/view/Actions.h"
#include "apps/zynview/view/KeyTable.h"

using zynview::HelpWindow;
using zynview::KeySection;

TEST(KeysHelp, has_every_row_of_mouse_display_and_viewer) {
  const QString help = zynview::KeysHelp();
  const std::vector<KeySection> sections = zynview::KeySections();
  ASSERT_EQ(sections.size(), 3u);
  for (const KeySection& section : sections) {
    EXPECT_TRUE(help.contains(section.title));
    for (const auto& [key, does] : section.rows) {
      EXPECT_TRUE(help.contains(key)) << key.toStdString();
      EXPECT_TRUE(help.contains(does)) << does.toStdString();
    }
  }
  for (int i = 0; const zynview::ActionRow* row = zynview::ActionRowAt(i); ++i)
    EXPECT_TRUE(help.contains(QString::fromLatin1(row->label))) << row->label;
}

TEST(HelpWindow, shows_the_same_rows_as_the_help_in_a_terminal) {
  HelpWindow window(nullptr);
  QSet<QString> texts;
  for (const QLabel* label : window.findChildren<QLabel*>()) texts.insert(label->text());
  for (const KeySection& section : zynview::KeySections()) {
    EXPECT_TRUE(texts.contains(section.title));
    for (const auto& [key, does] : section.rows) {
      EXPECT_TRUE(texts.contains(key)) << key.toStdString();
      EXPECT_TRUE(texts.contains(does)) << does.toStdString();
    }
  }
}

TEST(HelpWindow, leaves_the_viewer_at_hand_and_closes_with_escape) {
  HelpWindow window(nullptr);
  window.Present();
  EXPECT_TRUE(window.isVisible());
  EXPECT_FALSE(window.isModal());
  window.Present();
  EXPECT_TRUE(window.isVisible());
  QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QCoreApplication::sendEvent(&window, &escape);
  EXPECT_FALSE(window.isVisible());
  window.Present();
  EXPECT_TRUE(window.isVisible()) << "and opens again";
}
