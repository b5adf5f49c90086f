// Finds typed key sequences and names the command that each stands for.
#pragma once

#include <cstdint>
#include <string>

#include "QTD/frame/Properties.h"

namespace QTD {

// Has no lock: the window that owns it calls it on the GUI thread.
class KeyboardCommand {
 public:
  KeyboardCommand() = default;
  KeyboardCommand(const KeyboardCommand&) = delete;
  KeyboardCommand& operator=(const KeyboardCommand&) = delete;
  virtual ~KeyboardCommand();

  // Takes the low byte of a key code. Answers the command of the first sequence in `sequences` that the keys
  // typed so far end with, upper and lower case alike; an empty text when there is none.
  std::string process(char typed);

  PROPERTIES sequences;  // from key sequence to command name

 protected:
  std::string name;    // stays empty
  std::string buffer;  // the last keys typed

 public:
  int32_t maxLength = 0;  // of the longest sequence, set by whoever fills `sequences`; 0: nothing is found
};

}  // namespace QTD
