#include "QTD/chain/LiveChains.h"

#include <algorithm>

LiveChains& LiveChains::Instance() {
  // Never destroyed: chains may live until the very end of the process.
  static LiveChains& instance = *new LiveChains;
  return instance;
}

void LiveChains::Add(QTDProcessor* chain) {
  const std::lock_guard<std::mutex> guard(lock);
  chains.push_back(chain);
}

void LiveChains::Remove(QTDProcessor* chain) {
  const std::lock_guard<std::mutex> guard(lock);
  chains.erase(std::remove(chains.begin(), chains.end(), chain), chains.end());
}

QTDProcessor* LiveChains::Find(const void* pointer) {
  const std::lock_guard<std::mutex> guard(lock);
  const auto found = std::find(chains.begin(), chains.end(), pointer);
  return found == chains.end() ? nullptr : *found;
}
