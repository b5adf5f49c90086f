// A locale that writes one half as "0,5" and groups digits by points.
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <clocale>
#include <fstream>
#include <string>

namespace test {

// Makes the locale with the system's own compiler, so that no locale needs to be installed, and sets it for
// the whole process while this lives, as a host would.
class CommaLocale {
 public:
  CommaLocale() : before(std::setlocale(LC_ALL, nullptr)) {
    const std::string folder = directory.path().toStdString();
    std::ofstream(folder + "/source") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                         "grouping 3;3\nEND LC_NUMERIC\n";
    std::ofstream(folder + "/characters") << "<code_set_name> PLAIN\n<comment_char> %\n<escape_char> /\n"
                                             "CHARMAP\n<U0000>..<U007F> /x00\nEND CHARMAP\n";
    QProcess compiler;
    compiler.setStandardErrorFile(QProcess::nullDevice());
    compiler.start(QStringLiteral("localedef"),
                   {QStringLiteral("-c"), QStringLiteral("-i"), directory.filePath(QStringLiteral("source")),
                    QStringLiteral("-f"), directory.filePath(QStringLiteral("characters")),
                    directory.filePath(QStringLiteral("zz_ZZ"))});
    compiler.waitForFinished();
    qputenv("LOCPATH", directory.path().toUtf8());
    set = std::setlocale(LC_NUMERIC, "zz_ZZ") != nullptr;
  }
  ~CommaLocale() {
    std::setlocale(LC_ALL, before.c_str());
    qunsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  bool IsSet() const { return set && std::string(std::localeconv()->decimal_point) == ","; }

 private:
  QTemporaryDir directory;
  std::string before;
  bool set = false;
};

}  // namespace test
