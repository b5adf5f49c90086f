// Viewers and windows that go while a thread of the host is inside a call of their parameters.
#include "Harness.h"
#include "support/CallUnderWay.h"

namespace {

using test::CallUnderWay;
using windowtest::Settle;

// Whether the call had ended when `leaving` said that it goes.
template <typename Leaving>
bool EndsBeforeSignal(Leaving* leaving) {
  CallUnderWay call;
  bool told = false;
  bool ended = false;
  QObject::connect(leaving, &Leaving::signalClosing, [&] {
    told = true;
    ended = call.HasEnded();
  });
  call.Begin(*leaving);
  delete leaving;
  EXPECT_TRUE(told);
  return ended;
}

}  // namespace

TEST(QTDViewerEnd, waits_for_parameter_calls_before_anything_goes) {
  QWidget parent;
  EXPECT_TRUE(EndsBeforeSignal(new QTDViewer(&parent, false)));
  Settle();
}

TEST(QTDWindowEnd, waits_for_parameter_calls_before_anything_goes) {
  QWidget parent;
  EXPECT_TRUE(EndsBeforeSignal(new QTDWindow(&parent, false)));
}
