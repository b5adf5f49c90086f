// Remembers for which view the overlays and the scroll bars were last brought into place.
#pragma once

#include <mutex>

#include "QTD/screen/QTDScreen.h"

namespace QTD {

struct ViewState {
  RectD picture;
  double scale = 0;
  PairI position, range, page;
  bool hasImage = false;
};

bool operator==(const ViewState& one, const ViewState& other);

// Any thread. Passes over the objects may overlap when two threads change the view at once; what such passes
// left behind is not trusted, so that the next look starts another pass.
class ViewTracker {
 public:
  bool IsCurrent(const ViewState& now);
  void BeginPass();
  void EndPass(const ViewState& seen);  // `seen`: the view as it was when the pass began
  void Abandon();                       // a pass that could not be ended
  // Around the storing of one object, whose place is worked out from the view as well.
  void BeginStore() { BeginPass(); }
  void EndStore();

 private:
  bool LeaveLast();

  std::mutex lock;  // guards all of the below; nothing else is locked while it is held
  ViewState last;
  bool valid = false;
  int passes = 0;
  bool overlapped = false;
};

}  // namespace QTD
