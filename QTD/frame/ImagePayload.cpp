#include "QTD/frame/ImagePayload.h"

namespace QTD {

ARGUMENTS& ImageNotificationPayload() {
  static ARGUMENTS payload = {{"code", "processed"}, {"result", "0"}};
  return payload;
}

}  // namespace QTD
