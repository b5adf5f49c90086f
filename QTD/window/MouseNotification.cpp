#include "QTD/window/MouseNotification.h"

#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "QTD/screen/QTDScreen.h"

namespace QTD {
namespace {

// How a notice tells the position in the picture.
enum class ImagePosition {
  None,
  Exact,    // "%f", "-" off the picture
  Rounded,  // "%d", "-" off the picture
  Always,   // "%f", also off the picture
};

struct NoticeRow {
  MouseNotice notice;
  const char* code;
  const char* left;  // null: not told
  bool global;
  ImagePosition image;
  bool waits;
  uint32_t flag;
};

constexpr NoticeRow kNotices[] = {
    {MouseNotice::LeftDown, "mouse.down", "1", false, ImagePosition::Exact, true, kNotifyButtons},
    {MouseNotice::RightClick, "mouse.down", "0", true, ImagePosition::Rounded, false, kNotifyButtons},
    {MouseNotice::Move, "mouse.move", nullptr, false, ImagePosition::Always, false, kNotifyMovement},
    {MouseNotice::LeftUp, "mouse.up", "1", false, ImagePosition::Exact, true, kNotifyButtons},
    {MouseNotice::Free, "mouse.free", nullptr, false, ImagePosition::None, true, kNotifyMovement},
};

const NoticeRow& Row(MouseNotice notice) {
  for (const NoticeRow& row : kNotices) {
    if (row.notice == notice) return row;
  }
  return kNotices[0];
}

void AddImagePosition(ARGUMENTS& arguments, ImagePosition form, const QPoint& window, QTDScreen* screen) {
  if (form == ImagePosition::None) return;
  arguments["img.x"] = "-";
  arguments["img.y"] = "-";
  double x = window.x();
  double y = window.y();
  if (!screen) return;
  const bool onPicture = screen->transform(&x, &y, "win", "img", true, false);
  if (!onPicture && form != ImagePosition::Always) return;
  const bool rounded = form == ImagePosition::Rounded;
  arguments["img.x"] = rounded ? ToText(Round(x)) : ToText(x);
  arguments["img.y"] = rounded ? ToText(Round(y)) : ToText(y);
}

}  // namespace

uint32_t MouseNoticeFlag(MouseNotice notice) {
  return Row(notice).flag;
}

bool MouseNoticeWaits(MouseNotice notice) {
  return Row(notice).waits;
}

ARGUMENTS MouseNoticeArguments(MouseNotice notice, const QPoint& window, const QPoint& global,
                               QTDScreen* screen) {
  const NoticeRow& row = Row(notice);
  ARGUMENTS arguments;
  arguments["code"] = row.code;
  if (row.left) arguments["left"] = row.left;
  arguments["win.x"] = ToText(window.x());
  arguments["win.y"] = ToText(window.y());
  if (row.global) {
    arguments["gbl.x"] = ToText(global.x());
    arguments["gbl.y"] = ToText(global.y());
  }
  AddImagePosition(arguments, row.image, window, screen);
  return arguments;
}

}  // namespace QTD
