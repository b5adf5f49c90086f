#include "QTD/image/QTDImageParser.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <stdexcept>

#include "QTD/frame/Text.h"
#include "QTD/image/FormatNumber.h"
#include "QTD/image/FormatTime.h"

namespace {

constexpr char kOpening[] = "${";
constexpr char kClosing[] = "}";
constexpr char kSeparator = ':';
constexpr size_t kOpeningLength = 2;

// How often, and to how many bytes, text that an expansion brought in is expanded again.
constexpr int kMaxReplacements = 1000;
constexpr size_t kMaxGrowth = size_t{1} << 20;

constexpr char kTimeLetters[] = "YybBmUWjdeaAwuHIMSf";
constexpr char kFileNameExcluded[] = "<>:\"/\\|?*";

char LowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool EqualsIgnoringCase(const std::string& one, const char* other) {
  const std::string two = other;
  return std::equal(one.begin(), one.end(), two.begin(), two.end(),
                    [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}

// Takes the next part off the front of `rest`; runs of separators count as one. Empty when there is none.
std::string NextPart(std::string& rest) {
  const size_t begin = std::min(rest.find_first_not_of(kSeparator), rest.size());
  const size_t end = std::min(rest.find(kSeparator, begin), rest.size());
  const std::string part = rest.substr(begin, end - begin);
  rest.erase(0, end);
  return part;
}

// Replaces each '%' from `position` to the end of the text that no time letter follows; true when none was.
bool RepairPercents(std::string& text, size_t position) {
  bool valid = true;
  for (position = text.find('%', position); position != std::string::npos;
       position = text.find('%', position + 1)) {
    if (position + 1 == text.size()) throw std::out_of_range("invalid string position");
    if (std::string(kTimeLetters).find(text[position + 1]) != std::string::npos) continue;
    text[position] = '#';
    valid = false;
  }
  return valid;
}

}  // namespace

struct QTDImageParser::Keyword {
  const char* name;
  const char* format;  // default
  std::string (*expand)(const QTDImageParser& parser, const std::string& format);
};

const QTDImageParser::Keyword* QTDImageParser::FindKeyword(const std::string& name) {
  using QTD::FormatNumbers;
  using QTD::FormatValue;
  using Parser = const QTDImageParser&;
  using Format = const std::string&;
  static constexpr Keyword kKeywords[] = {
      {"br", "", [](Parser, Format) { return std::string("\n"); }},
      {"tab", "", [](Parser, Format) { return std::string("\t"); }},
      {"time", "%H%M%S",
       [](Parser p, Format format) { return QTD::FormatTime(format, p.seconds, p.millisecond); }},
      {"date", "%Y%m%d",
       [](Parser p, Format format) { return QTD::FormatTime(format, p.seconds, p.millisecond); }},
      {"millis", "%d",
       [](Parser p, Format format) { return FormatNumbers(format, {FormatValue(p.milliseconds)}); }},
      {"image.id", "%08u",
       [](Parser p, Format format) {
         return p.image ? FormatNumbers(format, {FormatValue(p.image->imageID)}) : std::string();
       }},
      {"image.time", "%u",
       [](Parser p, Format format) {
         return p.image ? FormatNumbers(format, {FormatValue(p.image->timestamp)}) : std::string();
       }},
      {"image.dims", "%ux%u",
       [](Parser p, Format format) {
         return p.image ? FormatNumbers(format, {FormatValue(p.image->width), FormatValue(p.image->height)})
                        : std::string();
       }},
      {"image.type", "%u",
       [](Parser p, Format format) {
         return p.image ? FormatNumbers(format, {FormatValue(p.image->pixelType)}) : std::string();
       }},
  };
  for (const Keyword& keyword : kKeywords) {
    if (EqualsIgnoringCase(name, keyword.name)) return &keyword;
  }
  return nullptr;
}

QTDImageParser::QTDImageParser() {
  name = "QTDImageParser";
  variables.Clear();
}

int64_t QTDImageParser::ReadClock() const {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  return duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// One reading for the whole text.
void QTDImageParser::TakeClock() {
  milliseconds = ReadClock();
  seconds = milliseconds / 1000;
  if (seconds * 1000 > milliseconds) --seconds;
  millisecond = static_cast<int32_t>(milliseconds - seconds * 1000);
}

// A value that can't be read is a no: nothing may leave `Parse` for it.
bool QTDImageParser::WantsValidTime() {
  try {
    return options.GetBool("validateTime", "0");
  } catch (const std::exception&) {
    return false;
  }
}

std::string QTDImageParser::Parse(const char* text) {
  if (text == nullptr || *text == 0) return {};
  std::string copy = text;
  TakeClock();
  if (WantsValidTime()) ValidateTime(copy, 1, false);
  image = static_cast<const ZynImage*>(variables.GetPointer("image"));
  copy = Expand(copy);
  image = nullptr;
  return copy;
}

// Always expands the first placeholder of the whole text, so what an expansion brings in is expanded too.
// `head` holds the text up to a "}" of the original; the rest is pulled in when no whole placeholder is left
// in `head`.
std::string QTDImageParser::Expand(const std::string& text) {
  std::string head;
  size_t pulled = 0;                    // bytes of `text` that went into `head`
  size_t search = 0;                    // no opening stands before
  size_t before = std::string::npos;    // place of the placeholder of the round before
  size_t original = std::string::npos;  // from here on `head` holds nothing that an expansion brought in
  int replacements = 0;                 // since the last placeholder of the text's own
  size_t brought = 0;                   // bytes that came out of text that was brought in
  for (;;) {
    const size_t position = head.find(kOpening, search);
    const size_t end =
        position == std::string::npos ? position : head.find(kClosing, position + kOpeningLength);
    if (end == std::string::npos) {
      if (pulled == text.size()) return head;
      const size_t stop = std::min(text.find(kClosing, pulled), text.size() - 1) + 1;
      original = head.size();
      search = position != std::string::npos ? position : std::max<size_t>(original, 1) - 1;
      head.append(text, pulled, stop - pulled);
      pulled = stop;
      continue;
    }
    // An expansion that leaves a placeholder at the same place ends the loop, and so does a variable that
    // brings in itself without end.
    const bool own = position >= original;
    if (own) replacements = 0;
    const bool endless = !own && (replacements >= kMaxReplacements || brought > kMaxGrowth);
    if (position == before || endless) break;

    const std::string body = head.substr(position + kOpeningLength, end - position - kOpeningLength);
    const std::string result = ExpandToken(body.c_str(), "");
    head.replace(position, end + 1 - position, result);
    ++replacements;
    if (!own) brought += result.size();
    before = position;
    search = std::max<size_t>(position, 1) - 1;
    original = std::string::npos;
  }
  return head.append(text, pulled, std::string::npos);
}

std::string QTDImageParser::ExpandToken(const char* token, const char* fallback) {
  const std::string otherwise = fallback != nullptr ? fallback : "";
  if (token == nullptr) return otherwise;
  std::string rest = token;
  const std::string keyword = NextPart(rest);
  if (keyword.empty()) return otherwise;
  const std::string format = NextPart(rest);

  std::string value;
  if (variables.Count() > 0 && GetVariable(keyword.c_str(), value)) return value;
  const Keyword* known = FindKeyword(keyword);
  if (known == nullptr) return otherwise;
  return known->expand(*this, format.empty() ? known->format : format);
}

bool QTDImageParser::GetVariable(const char* variable, std::string& value) {
  std::string found;
  if (variable == nullptr || !variables.Lookup(variable, &found)) return false;
  value = QTD::ParseString(found);
  return true;
}

bool QTDImageParser::ValidateTime(std::string& text, int /*ignored*/, bool cleanFileName) {
  bool valid = true;
  for (const std::string opener : {"${time:", "${date:"}) {
    // The check runs on to the end of the text, past the placeholder's own, so the first opener covers the
    // others.
    const size_t position = text.find(opener);
    if (position == std::string::npos) continue;
    if (!RepairPercents(text, position + opener.size())) valid = false;
  }
  if (cleanFileName && CleanFileName(text, ' ')) valid = false;
  return valid;
}

bool QTDImageParser::CleanFileName(std::string& text, char replacement) {
  const std::string excluded = kFileNameExcluded;
  if (excluded.find(replacement) != std::string::npos) return false;
  bool changed = false;
  for (char& letter : text) {
    if (excluded.find(letter) == std::string::npos) continue;
    letter = replacement;
    changed = true;
  }
  return changed;
}
