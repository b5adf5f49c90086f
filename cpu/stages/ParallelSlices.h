// The one way in which the loops over image lines run on several threads.
#pragma once

#include <algorithm>
#include <cstddef>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace ImageKernels {

// How many threads to ask for. One more than there are processors: with at most as many, the threads of a
// team burn their processor while they wait for each other, and on a machine that is busy otherwise a frame
// then takes several scheduler ticks instead of one or two milliseconds. Whoever has asked for fewer threads
// gets fewer. More than `kMostThreads` find no free memory bandwidth, and leave processors to others.
inline int TeamSize() {
#ifdef _OPENMP
  constexpr int kMostThreads = 8;
  const int wanted = omp_get_max_threads();
  const int processors = omp_get_num_procs();
  return std::min(wanted < processors ? wanted : processors + 1, kMostThreads);
#else
  return 1;
#endif
}

// Calls work(first, end) for slices of [0, count), at most `slice` long each, on several threads when there
// are several slices. `work` does not throw. Any thread.
template <typename Work>
void ForSlices(size_t count, size_t slice, const Work& work) {
  const size_t slices = (count + slice - 1) / slice;
  [[maybe_unused]] const int threads = slices > 1 ? TeamSize() : 1;
#pragma omp parallel for schedule(dynamic) num_threads(threads) if (threads > 1)
  for (size_t index = 0; index < slices; ++index) {
    work(index * slice, std::min(count, (index + 1) * slice));
  }
}

}  // namespace ImageKernels
