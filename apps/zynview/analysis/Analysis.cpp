#include "analysis/Analysis.h"

namespace zynview {

Analysis Analyse(const ZynImage& frame, const AnalysisRequest& request, const std::atomic<bool>& stop) {
  SampleReader reader(frame);
  Analysis result;
  result.imageID = frame.imageID;
  result.depth = reader.Depth();
  result.histogram = Histogram(reader);
  result.statistics = Statistics(reader);
  result.isWhole = request.region.isEmpty();
  result.region = result.isWhole ? reader.Picture() : request.region.intersected(reader.Picture());
  // A record may claim more lines than its bytes can hold.
  const QRect stored = result.region.intersected(reader.Stored());
  for (int y = stored.top(); y <= stored.bottom() && !stop; ++y) {
    const std::vector<SampleRun>& runs = reader.Read(y, stored.left(), stored.right() + 1);
    result.histogram.Add(runs, reader.Values());
    result.statistics.Add(runs, reader.Values());
  }
  result.profile = ReadProfile(&reader, request.line < 0 ? reader.Picture().height() / 2 : request.line);
  return result;
}

}  // namespace zynview
