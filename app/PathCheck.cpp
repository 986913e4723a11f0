#include "app/PathCheck.hpp"

#include <utility>

#include "app/Signals.hpp"
#include "io/Errors.hpp"

namespace ZARN::App {
namespace {

/// Paths judged in one call; few enough to stay in the processor's cache.
constexpr std::size_t kBatchSize = 64;

}  // namespace

PathCheck::PathCheck(const DU::ShadowingCalculator& calculator,
                     IO::LightPathReader& reader, std::size_t threads)
    : calculator_(calculator),
      reader_(reader),
      // While one thread waits for the oldest block, others can continue.
      maxBlocks_(threads == 1 ? 1 : 2 * threads),
      batches_(threads),
      work_(threads, [this](CheckedBlock& checked, std::size_t worker) {
        FindVerdicts(checked, batches_[worker]);
      }) {}

const PathCheck::CheckedBlock* PathCheck::Next() {
  while (MayReadOn()) {
    CheckedBlock next = std::move(current_);  // reuse its buffers
    if (Read(next.text)) work_.Push(std::move(next));
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

void PathCheck::FindVerdicts(CheckedBlock& checked,
                             std::vector<DU::LightPath>& batch) const {
  checked.verdicts.clear();
  checked.withMessages.clear();
  batch.resize(kBatchSize);
  std::size_t filled = 0;
  const auto findBatch = [&] {
    ThrowIfInterrupted();
    const std::size_t before = checked.verdicts.size();
    checked.verdicts.resize(before + filled);
    calculator_.FindShadowing(batch.data(), filled,
                              checked.verdicts.data() + before);
    filled = 0;
  };

  IO::CsvRows rows = reader_.Table().RowsOf(checked.text);
  try {
    while (reader_.Next(rows, batch[filled])) {
      const DU::LightPath& path = batch[filled];
      if (calculator_.WritesMessages(path.LightPathType)) {
        const DU::LightPath withMessages = path;
        findBatch();
        checked.withMessages.push_back(
            {checked.verdicts.size(), reader_.TypeName(rows), withMessages});
        checked.verdicts.push_back(DU::eShadowingComponent::kNone);
      } else if (++filled == batch.size()) {
        findBatch();
      }
    }
  } catch (const IO::CsvError& error) {
    checked.error = error;
  }
  findBatch();
  checked.extent = rows.Read();
}

}  // namespace ZARN::App
