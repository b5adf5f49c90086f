#include "QTD/chain/StageRow.h"

#include <memory>

#include "QTD/chain/QTDProcessor.h"

namespace {

struct ReleaseAndDelete {
  void operator()(ZynImgProcessor* stage) const { QTDProcessor::FreeStage(stage); }
};

using OwnedStage = std::unique_ptr<ZynImgProcessor, ReleaseAndDelete>;

bool AppendMade(QTDProcessor& chain, const StageRow& row, OwnedStage stage, const ZynImage* format,
                const ZynImage* output) {
  if (row.configure) row.configure(chain, *stage);
  if (stage->Init(format, row.output == kGetsOutput ? output : nullptr) != 0) return false;
  if (chain.AddProcessor(row.name, stage.get()) != 0) return false;
  ZynImgProcessor* const added = stage.release();
  if (row.finish) row.finish(*added);
  return true;
}

bool AppendStage(QTDProcessor& chain, const StageRow& row, const ZynImage* format, const ZynImage* output) {
  if (row.createOnCard &&
      AppendMade(chain, row, OwnedStage(row.createOnCard(chain.Display())), format, output)) {
    return true;
  }
  if (!row.create) return false;
  ZynComponent* const parent = row.parent == kChainIsParent ? chain.GetComponent() : nullptr;
  return AppendMade(chain, row, OwnedStage(row.create(parent)), format, output);
}

}  // namespace

bool AppendStages(QTDProcessor& chain, const StageRow* rows, size_t count, const ZynImage* source,
                  const ZynImage* output) {
  for (size_t index = 0; index < count; ++index) {
    const ZynImage* const reached = chain.GetImageInfo(false);
    const ZynImage* const format = reached ? reached : source;
    if (!format) return false;
    if (!rows[index].applies(format->pixelType)) continue;
    if (!AppendStage(chain, rows[index], format, output)) return false;
  }
  return true;
}
