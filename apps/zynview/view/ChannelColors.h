// The colours in which the curves of the analysis are drawn.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

namespace zynview {

// Readable on the palette's base, be it light or dark. `kind` is a letter of `PixelRow::samples`.
QColor ChannelColor(char kind, const QPalette& palette);

QString ChannelName(char kind);  // such as "G", "grey"

}  // namespace zynview
