// Locales that the machine need not have.
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <cctype>
#include <clocale>
#include <fstream>
#include <string>

namespace test {

// Makes a locale of one category with the system's own compiler, and sets it for the whole process while this
// lives, as a host would.
class OwnLocale {
 public:
  // `source` describes the category in the compiler's language.
  OwnLocale(int category, const std::string& source) : before(std::setlocale(LC_ALL, nullptr)) {
    const std::string folder = directory.path().toStdString();
    std::ofstream(folder + "/source") << source;
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
    set = std::setlocale(category, "zz_ZZ") != nullptr;
  }
  ~OwnLocale() {
    std::setlocale(LC_ALL, before.c_str());
    qunsetenv("LOCPATH");
  }
  OwnLocale(const OwnLocale&) = delete;
  OwnLocale& operator=(const OwnLocale&) = delete;

 protected:
  bool WasSet() const { return set; }

 private:
  QTemporaryDir directory;
  std::string before;
  bool set = false;
};

// Writes one half as "0,5" and groups digits by points.
class CommaLocale : public OwnLocale {
 public:
  CommaLocale()
      : OwnLocale(LC_NUMERIC,
                  "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n") {}
  bool IsSet() const { return WasSet() && std::string(std::localeconv()->decimal_point) == ","; }
};

// Takes '|' for a blank.
class BarLocale : public OwnLocale {
 public:
  BarLocale()
      : OwnLocale(LC_CTYPE,
                  "LC_CTYPE\nupper <U0041>..<U005A>\nlower <U0061>..<U007A>\ndigit <U0030>..<U0039>\n"
                  "space <U0009>..<U000D>;<U0020>;<U007C>\nEND LC_CTYPE\n") {}
  bool IsSet() const { return WasSet() && std::isspace('|'); }
};

}  // namespace test
