#include "view/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace zynview {

QString ElidedLabel::ShownIn(int width) const {
  return fontMetrics().elidedText(text(), Qt::ElideRight, width);
}

void ElidedLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRect place = contentsRect();
  style()->drawItemText(&painter, place, Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                        ShownIn(place.width()), foregroundRole());
}

}  // namespace zynview
