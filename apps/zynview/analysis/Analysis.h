// What the viewer finds out about one frame.
#pragma once

#include <QRect>
#include <atomic>
#include <cstdint>

#include "ZynImage.h"
#include "analysis/Histogram.h"
#include "analysis/LineProfile.h"
#include "analysis/Statistics.h"

namespace zynview {

struct AnalysisRequest {
  QRect region;   // empty: the whole picture
  int line = -1;  // of the profile; -1: the one in the middle
};

struct Analysis {
  uint64_t imageID = 0;
  int depth = 0;  // 0: a format that is not known
  QRect region;   // what was counted; cut to the picture
  bool isWhole = false;
  Histogram histogram;
  Statistics statistics;
  LineProfile profile;
};

// Any thread. Breaks off when `stop` becomes true; then the answer is of no use.
Analysis Analyse(const ZynImage& frame, const AnalysisRequest& request, const std::atomic<bool>& stop);

}  // namespace zynview
