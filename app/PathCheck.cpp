#include "app/PathCheck.hpp"

#include <utility>

#include "app/Signals.hpp"
#include "io/Errors.hpp"
#include "io/IntegerName.hpp"
#include "io/NearestName.hpp"
#include "io/Quoted.hpp"

namespace ZARN::App {
namespace {

/// Paths judged in one call; few enough to stay in the processor's cache.
constexpr std::size_t kBatchSize = 64;

std::string DescribeUnknownType(std::string_view name) {
  return IO::Quoted(name) + " is not the name of a path type" +
         IO::Suggest(IO::NearestName(
             std::string(name),
             {DU::kLightPathTypeNames.begin(), DU::kLightPathTypeNames.end()}));
}

}  // namespace

PathCheck::PathCheck(const DU::ShadowingCalculator& calculator,
                     IO::LightPathReader& reader, const Options& options)
    : calculator_(calculator),
      reader_(reader),
      options_(options),
      details_(calculator, options.columns),
      // While one thread waits for the oldest block, others can continue.
      maxBlocks_(options.threads == 1 ? 1 : 2 * options.threads),
      batches_(options.threads),
      work_(options.threads, [this](CheckedBlock& checked, std::size_t worker) {
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
  checked.names.clear();
  checked.details.clear();
  checked.firstTexts.assign(reader_.NameColumns().size(), std::nullopt);
  batch.resize(kBatchSize);
  std::size_t filled = 0;
  const auto findBatch = [&] {
    ThrowIfInterrupted();
    const std::size_t before = checked.verdicts.size();
    checked.verdicts.resize(before + filled);
    calculator_.FindShadowing(batch.data(), filled,
                              checked.verdicts.data() + before);
    if (details_.IsNeeded()) {
      for (std::size_t i = 0; i < filled; ++i) {
        AddDetails(batch[i], checked.verdicts[before + i], checked);
      }
    }
    filled = 0;
  };

  IO::CsvRows rows = reader_.Table().RowsOf(checked.text);
  try {
    while (reader_.Next(rows, batch[filled])) {
      const DU::LightPath& path = batch[filled];
      if (options_.refusesUnknownTypes &&
          path.LightPathType == IO::LightPathReader::kUnknownType) {
        throw reader_.TypeError(rows,
                                DescribeUnknownType(reader_.TypeName(rows)));
      }
      TakeNames(rows, checked);
      if (calculator_.WritesMessages(path.LightPathType)) {
        const DU::LightPath withMessages = path;
        findBatch();
        checked.withMessages.push_back(
            {checked.verdicts.size(), reader_.TypeName(rows), withMessages});
        checked.verdicts.push_back(DU::eShadowingComponent::kNone);
        if (details_.IsNeeded()) {
          // The caller finds its verdict later, with the messages.
          AddDetails(withMessages, calculator_.FindShadowing(withMessages),
                     checked);
        }
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

/// Add the details of the next path, with this verdict.
void PathCheck::AddDetails(const DU::LightPath& path,
                           DU::eShadowingComponent verdict,
                           CheckedBlock& checked) const {
  ThrowIfInterrupted();
  details_.Find(path, verdict, checked.details.emplace_back());
}

void PathCheck::TakeNames(const IO::CsvRows& rows,
                          CheckedBlock& checked) const {
  for (std::size_t i = 0; i < reader_.NameColumns().size(); ++i) {
    const std::string_view name = reader_.Name(rows, i);
    checked.names.push_back(name);
    std::optional<IO::CsvError>& firstText = checked.firstTexts[i];
    if (!options_.wantsIntegerNames || firstText.has_value()) continue;
    if (IO::IntegerOf(name).has_value()) continue;
    firstText = reader_.NameError(
        rows, i,
        IO::Quoted(name) + " is not a whole number, as those before it are");
  }
}

}  // namespace ZARN::App
