#include "app/PathCheck.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "app/Signals.hpp"
#include "io/Errors.hpp"
#include "io/IntegerName.hpp"
#include "io/Quoted.hpp"
#include "log/NearestName.hpp"

namespace ZARN::App {
namespace {

/// Paths judged in one call, so that an interrupt does not wait for many.
constexpr std::size_t kBatchSize = 1024;

std::string DescribeUnknownType(std::string_view name) {
  return IO::Quoted(name) + " is not the name of a path type" +
         Suggest(NearestName(
             std::string(name),
             {DU::kLightPathTypeNames.begin(), DU::kLightPathTypeNames.end()}));
}

}  // namespace

PathCheck::PathCheck(const DU::ShadowingCalculator& calculator,
                     IO::PathSource& source, const Options& options)
    : calculator_(calculator),
      source_(source),
      options_(options),
      details_(calculator, options.columns),
      // While one thread waits for the oldest block, others can continue.
      maxBlocks_(options.threads == 1 ? 1 : 2 * options.threads),
      work_(options.threads, [this](CheckedBlock& checked, std::size_t) {
        FindVerdicts(checked);
      }) {}

const PathCheck::CheckedBlock* PathCheck::Next() {
  while (MayReadOn()) {
    CheckedBlock next = std::move(current_);  // reuse its buffers
    if (next.paths == nullptr) next.paths = source_.MakeBlock();
    if (Read(next)) work_.Push(std::move(next));
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
         (work_.Size() < maxBlocks_ && !source_.WouldWait());
}

bool PathCheck::Read(CheckedBlock& block) {
  try {
    isAtEnd_ = !block.paths->Read();
  } catch (const IO::BadInput&) {
    failure_ = std::current_exception();
    isAtEnd_ = true;
  }
  return !isAtEnd_;
}

void PathCheck::FindVerdicts(CheckedBlock& checked) const {
  IO::PathBlock& block = *checked.paths;
  block.Parse();
  const std::size_t size = NumberToJudge(checked);
  checked.verdicts.assign(size, DU::eShadowingComponent::kNone);
  checked.withMessages.clear();
  auto unknown = block.paths.unknownTypes.begin();
  std::size_t begin = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const auto type = static_cast<DU::eLightPathType>(block.paths.types[i]);
    if (!calculator_.WritesMessages(type)) continue;
    FindUsual(begin, i, checked);
    begin = i + 1;
    std::string_view name;
    if (type == IO::LightPathBlock::kUnknownType) name = (unknown++)->name;
    checked.withMessages.push_back({i, name, block.paths.Arrays().At(i)});
  }
  FindUsual(begin, size, checked);
  FindDetails(size, checked);
  FindFirstTexts(size, checked);
}

/// All paths, or those before the first error.
std::size_t PathCheck::NumberToJudge(CheckedBlock& checked) const {
  const IO::PathBlock& block = *checked.paths;
  checked.error = block.error;
  if (!options_.refusesUnknownTypes || block.paths.unknownTypes.empty()) {
    return block.paths.Size();
  }
  // An error of the input is in a later row, which was not read any more.
  const IO::LightPathBlock::UnknownType& first =
      block.paths.unknownTypes.front();
  checked.error = block.TypeError(first.index, DescribeUnknownType(first.name));
  return first.index;
}

/// Judge consecutive paths without messages.
void PathCheck::FindUsual(std::size_t begin, std::size_t end,
                          CheckedBlock& checked) const {
  while (begin < end) {
    ThrowIfInterrupted();
    const std::size_t size = std::min(kBatchSize, end - begin);
    calculator_.FindShadowing(checked.paths->paths.Arrays().From(begin), size,
                              checked.verdicts.data() + begin);
    begin += size;
  }
}

void PathCheck::FindDetails(std::size_t size, CheckedBlock& checked) const {
  checked.details.clear();
  if (!details_.IsNeeded()) return;
  const DU::LightPathArrays arrays = checked.paths->paths.Arrays();
  auto withMessages = checked.withMessages.begin();
  for (std::size_t i = 0; i < size; ++i) {
    ThrowIfInterrupted();
    const DU::LightPath path = arrays.At(i);
    // The caller finds the verdict later, with the messages.
    const bool hasMessages =
        withMessages != checked.withMessages.end() && withMessages->index == i;
    if (hasMessages) ++withMessages;
    details_.Find(
        path,
        hasMessages ? calculator_.FindShadowing(path) : checked.verdicts[i],
        checked.details.emplace_back());
  }
}

void PathCheck::FindFirstTexts(std::size_t size, CheckedBlock& checked) const {
  const std::size_t columns = source_.NameColumns().size();
  checked.firstTexts.assign(columns, std::nullopt);
  if (!options_.wantsIntegerNames) return;
  for (std::size_t column = 0; column < columns; ++column) {
    for (std::size_t i = 0; i < size; ++i) {
      const std::string_view name = checked.paths->names[i * columns + column];
      if (IO::IntegerOf(name).has_value()) continue;
      checked.firstTexts[column] = checked.paths->NameError(
          i, column,
          IO::Quoted(name) + " is not a whole number, as those before it are");
      break;
    }
  }
}

}  // namespace ZARN::App
