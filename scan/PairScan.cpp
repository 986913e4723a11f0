#include "scan/PairScan.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace ZARN::Scan {

PairScan::PairScan(const DU::ShadowingCalculator& shadowing,
                   const DU::LightPathCalculator& lightPath, Settings settings)
    : shadowing_(shadowing),
      settings_(std::move(settings)),
      lightPaths_(settings_.threads, lightPath),
      work_(settings_.threads, [this](const Part& part, std::size_t worker) {
        FindVerdictsOfPart(part, lightPaths_[worker]);
      }) {}

const std::vector<PairChunk>& PairScan::FindVerdicts(const Pairs& pairs,
                                                     std::size_t begin,
                                                     std::size_t end) {
  chunks_.resize((end - begin + kChunkSize - 1) / kChunkSize);
  for (std::size_t number = 0; number < chunks_.size(); ++number) {
    const std::size_t next = std::min(begin + kChunkSize, end);
    work_.Push({&pairs, begin, next, number});
    begin = next;
  }
  // The caller owns the pairs: no thread may still use them when an exception
  // leaves.
  std::exception_ptr failure;
  while (work_.Size() > 0) {
    try {
      work_.Pop();
    } catch (...) {
      if (failure == nullptr) failure = std::current_exception();
      isStopping_ = true;
    }
  }
  isStopping_ = false;
  if (failure != nullptr) std::rethrow_exception(failure);
  return chunks_;
}

void PairScan::FindVerdictsOfPart(const Part& part,
                                  DU::LightPathCalculator& lightPath) {
  if (isStopping_) return;
  PairChunk& chunk = chunks_[part.number];
  chunk.verdicts.clear();
  chunk.paths.clear();
  for (std::size_t pair = part.begin; pair < part.end; ++pair) {
    const TVector3& event = part.pairs->events[part.pairs->EventOf(pair)];
    const TVector3& pmt = part.pairs->pmts[part.pairs->PMTOf(pair)];
    lightPath.CalcByPosition(event, pmt);
    Take(pair, lightPath, chunk);
    if (!settings_.withReflections) continue;
    lightPath.CalcReflectionByPosition(event, pmt);
    if (lightPath.HasPath()) Take(pair, lightPath, chunk);
  }
  if (settings_.onChunk) settings_.onChunk(part.number, chunk);
}

void PairScan::Take(std::size_t pair, const DU::LightPathCalculator& lightPath,
                    PairChunk& chunk) const {
  PairVerdict verdict;
  verdict.pair = pair;
  verdict.type = lightPath.GetLightPathType();
  if (verdict.HasPath()) {
    verdict.by = shadowing_.FindShadowing(lightPath.GetLightPath());
    if (settings_.withPaths) chunk.paths.push_back(lightPath.GetLightPath());
  }
  chunk.verdicts.push_back(verdict);
}

}  // namespace ZARN::Scan
