// Rows that compare: the library's code and its peer run by turns, so that a noisy machine disturbs both
// alike.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

inline double Seconds(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

template <typename Work>
double TimeOf(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return Seconds(std::chrono::steady_clock::now() - start);
}

inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Runs both by turns until the benchmark has enough, and reports the medians in milliseconds and
// "speedup" = peer / ours. `target` is what the row must reach (at least).
template <typename Ours, typename Peer>
void Compare(benchmark::State& state, double target, Ours&& ours, Peer&& peer) {
  ours();
  peer();
  std::vector<double> ourTimes, peerTimes;
  for (auto _ : state) {
    ourTimes.push_back(TimeOf(ours));
    peerTimes.push_back(TimeOf(peer));
    state.SetIterationTime(ourTimes.back());
  }
  state.counters["ours_ms"] = Median(ourTimes) * 1e3;
  state.counters["peer_ms"] = Median(peerTimes) * 1e3;
  state.counters["speedup"] = Median(peerTimes) / Median(ourTimes);
  state.counters["target"] = target;
}

}  // namespace bench
