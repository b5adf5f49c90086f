// The table of the viewer's keys and menu entries.
#include "apps/zynview/view/Actions.h"

#include <gtest/gtest.h>

#include <Qt>
#include <set>
#include <string>
#include <utility>

#include "apps/zynview/view/KeyTable.h"

using zynview::Action;
using zynview::ActionRow;
using zynview::ActionRowAt;
using zynview::FindAction;

TEST(ViewerActions, leave_the_keys_of_the_display_alone) {
  for (const int key : {int{Qt::Key_Plus}, int{Qt::Key_Minus}, int{Qt::Key_0}, int{Qt::Key_1}, int{Qt::Key_2},
                        int{Qt::Key_C}, int{Qt::Key_Left}, int{Qt::Key_Up}, int{Qt::Key_Right},
                        int{Qt::Key_Down}, int{Qt::Key_S}, int{Qt::Key_D}, int{Qt::Key_I}, 0}) {
    EXPECT_EQ(FindAction(key, false), nullptr) << key;
    EXPECT_EQ(FindAction(key, true), nullptr) << key;
  }
}

TEST(ViewerActions, are_found_by_their_keys) {
  EXPECT_EQ(FindAction(Qt::Key_Space, false)->action, Action::Pause);
  EXPECT_EQ(FindAction(Qt::Key_O, true)->action, Action::Overlays) << "capitals count as well";
  EXPECT_EQ(FindAction(Qt::Key_G, false)->action, Action::MoreGain);
  EXPECT_EQ(FindAction(Qt::Key_G, true)->action, Action::LessGain);
  EXPECT_EQ(FindAction(Qt::Key_X, false), nullptr);
}

TEST(ViewerActions, count_ctrl_always) {
  EXPECT_EQ(FindAction(Qt::Key_O, false, true)->action, Action::OpenFiles);
  EXPECT_EQ(FindAction(Qt::Key_O, true, true)->action, Action::OpenFolder);
  EXPECT_EQ(FindAction(Qt::Key_O, false)->action, Action::Overlays);
  EXPECT_EQ(FindAction(Qt::Key_K, false), nullptr);
  EXPECT_EQ(FindAction(Qt::Key_P, false, true), nullptr);
}

TEST(ViewerActions, have_a_key_and_a_label_each_and_stand_in_the_help) {
  std::set<std::string> names, labels;
  std::set<Action> actions;
  const QString help = zynview::KeysHelp();
  int count = 0;
  for (; const ActionRow* row = ActionRowAt(count); ++count) {
    names.insert(row->keyName);
    labels.insert(row->label);
    actions.insert(row->action);
    EXPECT_TRUE(help.contains(QString::fromLatin1(row->keyName))) << row->keyName;
    EXPECT_TRUE(help.contains(QString::fromLatin1(row->label))) << row->label;
    if (row->key != 0) {
      EXPECT_EQ(FindAction(row->key, row->shift, row->ctrl), row);
    }
  }
  EXPECT_GT(count, 0);
  const auto all = static_cast<std::size_t>(count);
  EXPECT_EQ(names.size(), all);
  EXPECT_EQ(labels.size(), all);
  EXPECT_EQ(actions.size(), all);
  EXPECT_EQ(ActionRowAt(-1), nullptr);
}
