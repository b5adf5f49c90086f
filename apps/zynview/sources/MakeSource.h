// Which source is meant by the options.
#pragma once

#include <memory>

#include "Options.h"
#include "sources/FrameSource.h"

namespace zynview {

// Not opened yet.
std::unique_ptr<FrameSource> MakeSource(const Options& options);

}  // namespace zynview
