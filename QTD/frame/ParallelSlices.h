// The one way in which the loops over image lines run on several threads.
#pragma once

#include <algorithm>
#include <cstddef>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace QTD {

// The most threads that work on one image. More find no free memory bandwidth, and leave processors to
// others.
constexpr int kMostThreads = 8;

// How many threads to ask for. One more than there are processors: with at most as many, the threads of a
// team burn their processor while they wait for each other, and on a machine that is busy otherwise a frame
// then takes several scheduler ticks instead of one or two milliseconds. Whoever has asked for fewer threads
// gets fewer.
inline int TeamSize() {
#ifdef _OPENMP
  const int wanted = omp_get_max_threads();
  const int processors = omp_get_num_procs();
  return std::min(wanted < processors ? wanted : processors + 1, kMostThreads);
#else
  return 1;
#endif
}

// Calls work(lane, first, end) for slices of [0, count), at most `slice` long each, on several threads when
// there are several slices. A lane is a number below `kMostThreads`; no two calls with the same lane run at
// the same time, so that each lane may have a workspace of its own. `work` does not throw. Any thread.
template <typename Work>
void ForSlicesInLanes(size_t count, size_t slice, const Work& work) {
  const size_t slices = (count + slice - 1) / slice;
  [[maybe_unused]] const int threads = slices > 1 ? TeamSize() : 1;
#ifdef _OPENMP
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (threads > 1)
  for (size_t index = 0; index < slices; ++index) {
    const auto lane = threads > 1 ? static_cast<size_t>(omp_get_thread_num()) : 0;
    work(lane, index * slice, std::min(count, (index + 1) * slice));
  }
#else
  for (size_t index = 0; index < slices; ++index) {
    work(size_t{0}, index * slice, std::min(count, (index + 1) * slice));
  }
#endif
}

// The same for work(first, end), which needs no workspace.
template <typename Work>
void ForSlices(size_t count, size_t slice, const Work& work) {
  ForSlicesInLanes(count, slice, [&work](size_t, size_t first, size_t end) { work(first, end); });
}

}  // namespace QTD
