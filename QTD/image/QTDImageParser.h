// Expands ${keyword} and ${keyword:format} with the values of an image, the clock and the user's variables.
#pragma once

#include <cstdint>
#include <string>

#include "QTD/image/TextParser.h"
#include "ZynImage.h"

// The lists may be changed from any thread; everything else belongs to one thread at a time, which the
// owner's lock sees to. The variable "image" holds the current `ZynImage` as a pointer; its record must live
// while `Parse` runs.
class QTDImageParser : public QTD::TextParser {
 public:
  QTDImageParser();

  // Raises std::out_of_range for a '%' at the very end of a text that the option "validateTime" has checked;
  // nothing else leaves it.
  std::string Parse(const char* text) override;

  // Repairs '%' sequences in time and date placeholders of `text`; true when nothing had to be repaired.
  // `cleanFileName` also blanks what a file name can't hold, in the whole text. `ignored` is kept, and no
  // value of it makes a difference.
  virtual bool ValidateTime(std::string& text, int ignored, bool cleanFileName);
  // The text for one placeholder body.
  virtual std::string ExpandToken(const char* token, const char* fallback);
  virtual bool GetVariable(const char* variable, std::string& value);

  // Puts `replacement` for all characters that a file name can't hold; true when the text changed. Changes
  // nothing when the replacement is such a character itself.
  static bool CleanFileName(std::string& text, char replacement);

 protected:
  // Milliseconds since the epoch, from the wall clock.
  virtual int64_t ReadClock() const;

  // Valid during one `Parse`.
  const ZynImage* image = nullptr;
  int64_t seconds = 0;
  int64_t milliseconds = 0;  // since the epoch
  int32_t millisecond = 0;   // within the second

 private:
  struct Keyword;
  static const Keyword* FindKeyword(const std::string& name);

  void TakeClock();
  bool WantsValidTime();
  std::string Expand(const std::string& text);
};
