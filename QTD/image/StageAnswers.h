// What a stage of the library answers, safe from a host that prepares or releases it on another thread
// meanwhile. A stage of the host's own has to guard itself.
#pragma once

#include <optional>

#include "QTD/image/HeldRecords.h"
#include "ZynImgProcessor.h"

namespace QTD {

// Its `Out`, held; null, with `hold` as it was, where there is none.
ZynImage* HeldOutOf(ZynImgProcessor& stage, RecordHold& hold);

// Its `GetImageInfo`.
std::optional<ZynImage> CopiedInfoOf(ZynImgProcessor& stage, bool source);

}  // namespace QTD
