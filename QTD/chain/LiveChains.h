// Which chains exist.
#pragma once

#include <mutex>
#include <vector>

class QTDProcessor;

// The display's parameter "processor" is a text that a host can overwrite. A pointer read from it is followed
// only when it is that of a chain that exists. Any thread.
class LiveChains {
 public:
  static LiveChains& Instance();

  void Add(QTDProcessor* chain);
  void Remove(QTDProcessor* chain);
  QTDProcessor* Find(const void* pointer);  // null when no chain lies there

 private:
  std::mutex lock;  // guards `chains`
  std::vector<QTDProcessor*> chains;
};
