// A line above the picture for what must not be missed, with a button that mends it.
#pragma once

#include <QToolBar>
#include <functional>

class QLabel;
class QPushButton;

namespace zynview {

// GUI thread. Hidden until it has something to tell.
class Notice : public QToolBar {
 public:
  explicit Notice(QWidget* parent);

  // Until `hide`, or until the button is pressed.
  void Tell(const QString& text, const QString& button, std::function<void()> onPress);

 private:
  QLabel* label;
  QPushButton* mend;
  std::function<void()> press;
};

}  // namespace zynview
