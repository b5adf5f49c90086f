// A line of text that ends with dots where there is no room for all of it.
#pragma once

#include <QLabel>

namespace zynview {

// GUI thread. `text` stays whole.
class ElidedLabel : public QLabel {
 public:
  using QLabel::QLabel;

  // What stands in so many pixels.
  QString ShownIn(int width) const;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace zynview
