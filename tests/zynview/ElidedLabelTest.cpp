// A line of text where room is scarce.
#include "apps/zynview/view/ElidedLabel.h"

#include <gtest/gtest.h>

#include <QPixmap>

using zynview::ElidedLabel;

TEST(ElidedLabel, ends_with_dots_where_there_is_no_room) {
  ElidedLabel label;
  label.setText(QStringLiteral("camera simulator — Mono8 1280 × 1024"));
  const int whole = label.fontMetrics().horizontalAdvance(label.text());
  EXPECT_EQ(label.ShownIn(whole + 5), label.text());  // widths are rounded
  const QString part = label.ShownIn(whole / 2);
  EXPECT_TRUE(part.endsWith(QChar(0x2026)));
  EXPECT_TRUE(label.text().startsWith(part.left(part.size() - 1)));
  EXPECT_LE(label.fontMetrics().horizontalAdvance(part), whole / 2);
}

TEST(ElidedLabel, draws_what_fits_and_not_the_rest) {
  ElidedLabel label;
  label.setContentsMargins(0, 0, 0, 0);
  label.setText(QStringLiteral("WWWWWWWWWWWWWWWW"));
  label.resize(60, 20);
  ElidedLabel other;
  other.setContentsMargins(0, 0, 0, 0);
  other.setText(label.ShownIn(60));
  other.resize(60, 20);
  EXPECT_EQ(label.grab().toImage(), other.grab().toImage());
}
