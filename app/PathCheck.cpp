#include "app/PathCheck.hpp"

#include <utility>

#include "app/Signals.hpp"
#include "io/Errors.hpp"

namespace ZARN::App {
namespace {

/// Paths that are judged at once; as records they stay near the processor.
constexpr std::size_t kBatchSize = 64;

}  // namespace

PathCheck::PathCheck(const DU::ShadowingCalculator& calculator,
                     IO::LightPathReader& reader, std::size_t threads)
    : calculator_(calculator),
      reader_(reader),
      // While a thread waits for the oldest, the others go on to the next.
      maxBlocks_(threads == 1 ? 1 : 2 * threads),
      batches_(threads),
      work_(threads, [this](Judged& judged, std::size_t worker) {
        Judge(judged, batches_[worker]);
      }) {}

const PathCheck::Judged* PathCheck::Next() {
  while (MayReadOn()) {
    Judged next = std::move(current_);  // its memory serves again
    if (Read(next.block)) work_.Push(std::move(next));
  }
  if (work_.Size() > 0) {
    current_ = work_.Pop();
    return &current_;
  }
  if (failure_ != nullptr) std::rethrow_exception(failure_);
  return nullptr;
}

bool PathCheck::MayReadOn() const {
  if (isAtEnd_) return false;
  return work_.Size() == 0 ||
         (work_.Size() < maxBlocks_ && !reader_.Table().WouldWait());
}

bool PathCheck::Read(IO::CsvBlock& block) {
  try {
    isAtEnd_ = !reader_.Table().NextBlock(block);
  } catch (const IO::BadInput&) {
    failure_ = std::current_exception();
    isAtEnd_ = true;
  }
  return !isAtEnd_;
}

void PathCheck::Judge(Judged& judged, std::vector<DU::LightPath>& batch) const {
  judged.verdicts.clear();
  judged.telling.clear();
  batch.resize(kBatchSize);
  std::size_t filled = 0;
  const auto judgeBatch = [&] {
    ThrowIfInterrupted();
    const std::size_t before = judged.verdicts.size();
    judged.verdicts.resize(before + filled);
    calculator_.FindShadowing(batch.data(), filled,
                              judged.verdicts.data() + before);
    filled = 0;
  };

  IO::CsvRows rows = reader_.Table().RowsOf(judged.block);
  try {
    while (reader_.Next(rows, batch[filled])) {
      const DU::LightPath& path = batch[filled];
      if (calculator_.WritesMessages(path.LightPathType)) {
        const DU::LightPath telling = path;
        judgeBatch();
        judged.telling.push_back(
            {judged.verdicts.size(), reader_.TypeName(rows), telling});
        judged.verdicts.push_back(DU::eShadowingComponent::kNone);
      } else if (++filled == batch.size()) {
        judgeBatch();
      }
    }
  } catch (const IO::CsvError& error) {
    judged.error = error;
  }
  judgeBatch();
  judged.extent = rows.Read();
}

}  // namespace ZARN::App
