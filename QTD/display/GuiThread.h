// Waiting for others without holding up the GUI thread.
#pragma once

namespace QTD {

// About a millisecond. On the GUI thread its events go on meanwhile, so that others who wait for it come to
// an end.
void WaitABit();

}  // namespace QTD
