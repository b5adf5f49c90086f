// The percentages that zoom steps follow, and the limits of the scale.
#pragma once

namespace QTD {

// The percentage behind `percent` on the way in (larger) or out (smaller). Above the ladder: by hundreds.
int NextZoomPercent(int percent, bool in);

// The scale held in its limits. Of limits that cross, as those of a very long and thin picture do, the lower
// one wins below it and the upper one above it.
double HeldScale(double scale, double lower, double upper);

}  // namespace QTD
