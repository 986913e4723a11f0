#include "tests/property/Batches.hpp"

#include <algorithm>
#include <cstdint>

#include "du/fast/ShadowingBatch.hpp"
#include "du/fast/ShadowingFilter.hpp"
#include "tests/property/PathColumns.hpp"
#include "tests/property/Paths.hpp"

namespace ZARN::Testing {

namespace {

using Component = DU::eShadowingComponent;

/// Memory for the verdicts of a batch, with guard elements on both sides that
/// must not change. The first verdict is not at an aligned address.
class VerdictRoom {
 public:
  explicit VerdictRoom(std::size_t count)
      : all_(count + kBefore + kAfter, kUntouched) {}

  Component* Begin() { return all_.data() + kBefore; }

  std::string Difference(const JudgedPaths& judged) const {
    const auto begin = all_.begin() + kBefore;
    const auto end = all_.end() - kAfter;
    for (std::size_t i = 0; i < judged.Size(); ++i) {
      const Component found = begin[static_cast<std::ptrdiff_t>(i)];
      if (found == judged.verdicts[i]) continue;
      return "path " + std::to_string(i) + " of " +
             std::to_string(judged.Size()) + ": " +
             DescribeDifference(judged.paths[i], found, judged.verdicts[i]);
    }
    const auto isUntouched = [](Component c) { return c == kUntouched; };
    if (!std::all_of(all_.begin(), begin, isUntouched)) {
      return "verdicts written before the first";
    }
    if (!std::all_of(end, all_.end(), isUntouched)) {
      return "verdicts written after the last";
    }
    return {};
  }

 private:
  static constexpr auto kUntouched = static_cast<Component>(0xEE);
  static constexpr std::ptrdiff_t kBefore = 67;
  static constexpr std::ptrdiff_t kAfter = 64;

  std::vector<Component> all_;
};

std::string NameOfVerdict(Component verdict) {
  if (verdict == Component::kNone) return "none";
  const std::string name = DU::NameOf(verdict);
  return name.empty() ? "no verdict at all" : name;
}

std::string In(const std::string& how, const std::string& difference) {
  return difference.empty() ? difference : how + ", " + difference;
}

}  // namespace

std::string DescribeDifference(const DU::LightPath& path, Component found,
                               Component plain) {
  TestPath described;
  described.path = path;
  return "real " + NameOfVerdict(found) + ", plain " + NameOfVerdict(plain) +
         ", " + Describe(described);
}

std::string SingleDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged) {
  for (std::size_t i = 0; i < judged.Size(); ++i) {
    const Component found = calculator.FindShadowing(judged.paths[i]);
    if (found != judged.verdicts[i]) {
      return "single path, " +
             DescribeDifference(judged.paths[i], found, judged.verdicts[i]);
    }
  }
  return {};
}

std::string RecordsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads) {
  VerdictRoom verdicts(judged.Size());
  calculator.FindShadowing(judged.paths.data(), judged.Size(), verdicts.Begin(),
                           threads);
  return In("records on " + std::to_string(threads) + " threads",
            verdicts.Difference(judged));
}

std::string ColumnsDifference(const DU::ShadowingCalculator& calculator,
                              const JudgedPaths& judged, std::size_t threads) {
  const PathColumns columns(judged.paths, PathColumns::eUnused::kNull);
  VerdictRoom verdicts(judged.Size());
  calculator.FindShadowing(columns.Arrays(), judged.Size(), verdicts.Begin(),
                           threads);
  return In("columns on " + std::to_string(threads) + " threads",
            verdicts.Difference(judged));
}

std::string KernelDifference(const DU::ShadowingCalculator& calculator,
                             const JudgedPaths& judged, std::size_t& open) {
  const PathColumns columns(judged.paths, PathColumns::eUnused::kNull);
  const DU::ShadowingFilter filter(calculator.GetHardware(), {});
  DU::ShadowingBatch batch(filter);
  std::vector<std::uint8_t> first;
  for (const DU::eKernel kernel : DU::AvailableKernels()) {
    batch.UseKernel(kernel);
    const std::string name =
        "kernel " + std::to_string(static_cast<int>(kernel));
    std::vector<std::uint8_t> records(judged.Size());
    std::vector<std::uint8_t> inColumns(judged.Size());
    for (std::size_t i = 0; i < judged.Size(); i += DU::kBatchPaths) {
      const std::size_t count = std::min(DU::kBatchPaths, judged.Size() - i);
      batch.Judge(filter, DU::PathsInRecords(judged.paths.data() + i), count,
                  records.data() + i);
      batch.Judge(filter, DU::PathsInColumns(columns.Arrays(), i), count,
                  inColumns.data() + i);
    }
    if (first.empty()) first = records;
    for (std::size_t i = 0; i < judged.Size(); ++i) {
      if (records[i] != first[i]) return name + " differs from the first";
      if (inColumns[i] != records[i]) return name + " differs for columns";
      if (records[i] == DU::kOpenVerdict) continue;
      const auto found = static_cast<Component>(records[i]);
      if (found != judged.verdicts[i]) {
        return name + ", " +
               DescribeDifference(judged.paths[i], found, judged.verdicts[i]);
      }
    }
  }
  open += static_cast<std::size_t>(
      std::count(first.begin(), first.end(), DU::kOpenVerdict));
  return {};
}

std::string AnyDifference(const DU::ShadowingCalculator& calculator,
                          const JudgedPaths& judged) {
  std::string difference = SingleDifference(calculator, judged);
  for (const std::size_t threads : {1U, 3U}) {
    if (difference.empty()) {
      difference = RecordsDifference(calculator, judged, threads);
    }
    if (difference.empty()) {
      difference = ColumnsDifference(calculator, judged, threads);
    }
  }
  return difference;
}

}  // namespace ZARN::Testing
