#include "rdf/JudgedPaths.hpp"

#include <algorithm>

namespace ZARN::RDF {
namespace {

/// Enough for the calculator's batches, few enough for the processor's cache.
constexpr std::uint64_t kPathsInBlock = 2048;

}  // namespace

void JudgedPaths::Read(std::uint64_t entry) {
  end_ = first_;  // no block, should reading fail
  codes_.clear();
  const std::vector<std::uint64_t>& starts = paths_.ClusterStarts();
  const auto next = std::upper_bound(starts.begin(), starts.end(), entry);
  const std::uint64_t endOfCluster =
      next == starts.end() ? paths_.Entries() : *next;
  const std::uint64_t count = std::min(kPathsInBlock, endOfCluster - entry);
  paths_.Read(entry, static_cast<std::size_t>(count), block_);
  first_ = entry;
  end_ = entry + count;
}

void JudgedPaths::Judge() {
  const std::size_t count = block_.paths.Size();
  verdicts_.resize(count);
  calculator_->FindShadowing(block_.paths.Arrays(), count, verdicts_.data());
  codes_.resize(count);
  std::transform(verdicts_.begin(), verdicts_.end(), codes_.begin(),
                 [](DU::eShadowingComponent verdict) {
                   return static_cast<int>(verdict);
                 });
}

}  // namespace ZARN::RDF
