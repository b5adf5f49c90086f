#include "view/ChannelColors.h"

namespace zynview {

namespace {

struct Row {
  char kind;
  QRgb onLight, onDark;
};

constexpr Row kRows[] = {
    {'R', 0xFFC81414, 0xFFFF6464}, {'G', 0xFF0A820A, 0xFF50DC50}, {'B', 0xFF2846DC, 0xFF78A0FF},
    {'U', 0xFF8C1ED2, 0xFFC88CFF}, {'V', 0xFFB45A00, 0xFFFFAA3C},
};

constexpr int kDark = 128;

}  // namespace

QColor ChannelColor(char kind, const QPalette& palette) {
  const bool isDark = palette.color(QPalette::Base).lightness() < kDark;
  for (const Row& row : kRows) {
    if (row.kind == kind) return QColor(isDark ? row.onDark : row.onLight);
  }
  return palette.color(QPalette::Text);
}

QString ChannelName(char kind) {
  return kind == 'L' ? QStringLiteral("grey") : QString(QLatin1Char(kind));
}

}  // namespace zynview
