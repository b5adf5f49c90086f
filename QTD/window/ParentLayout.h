// The place of a viewer and its vertical scroll bar inside the host's widget.
#pragma once

#include <QHBoxLayout>
#include <QPointer>

class QWidget;

namespace QTD {

// A widget without a layout gets one, which holds the viewer to the left of the bar. A layout that the host
// has made is kept: the two join it as one row. GUI thread.
class ParentLayout {
 public:
  void Add(QWidget* host, QWidget* viewer, QWidget* bar);
  // Takes out what `Add` put in, as far as it still exists.
  void Remove(QWidget* viewer, QWidget* bar);

 private:
  QPointer<QHBoxLayout> row;
  QPointer<QWidget> frame;  // around the row, in layouts that take widgets only
};

}  // namespace QTD
