// Files that are written whole or not at all.
#pragma once

#include <QIODevice>
#include <QImage>
#include <QString>
#include <functional>

namespace zynview {

enum class Existing { Replaced, Kept };

// Has `write` fill the file. Empty, or what is wrong: `write` answers false, or what it wrote does not get to
// the disk. All is as before then. A file that is there already is refused with `Kept`. What is no file, such
// as a pipe, is written straight. Any thread.
QString WriteFile(const QString& name, Existing existing, const std::function<bool(QIODevice&)>& write);

// Empty where a picture can be written to a file of this name, else a sentence with what is possible. The
// ending chooses the format; without one it is PNG.
QString PictureFormatProblem(const QString& name);

// Empty, or what is wrong.
QString WritePicture(const QImage& picture, const QString& name, Existing existing = Existing::Replaced);

}  // namespace zynview
