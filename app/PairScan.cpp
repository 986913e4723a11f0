#include "app/PairScan.hpp"

#include <algorithm>

#include "app/LightPathText.hpp"
#include "app/Signals.hpp"

namespace ZARN::App {
namespace {

/// Small enough to share out evenly, large enough that taking one is free.
constexpr std::size_t kChunkSize = 256;

void AppendPair(std::string& text, const Pairs& pairs, std::size_t pair) {
  text += pairs.Event(pair).cell;
  text += ',';
  text += pairs.PMT(pair).cell;
  text += ',';
}

void AppendVerdict(std::string& text, const PathVerdict& verdict) {
  if (!verdict.HasPath()) {
    text += ",,";
    text += PairScan::kNoPath;
  } else {
    const bool isShadowed = verdict.by != DU::eShadowingComponent::kNone;
    text += DU::kLightPathTypeNames[verdict.type];
    text += isShadowed ? ",1," : ",0,";
    text += DU::NameOf(verdict.by);
  }
  text += '\n';
}

}  // namespace

std::string PairScan::PathHeader() {
  return "event,pmt," + LightPathHeader() + "\n";
}

PairScan::PairScan(const DU::ShadowingCalculator& shadowing,
                   const DU::LightPathCalculator& lightPath,
                   const Settings& settings)
    : shadowing_(shadowing),
      settings_(settings),
      lightPaths_(settings.threads, lightPath),
      work_(settings.threads, [this](Part& part, std::size_t worker) {
        JudgePart(part, lightPaths_[worker]);
      }) {}

const std::vector<PairScan::Chunk>& PairScan::Judge(const Pairs& pairs,
                                                    std::size_t begin,
                                                    std::size_t end) {
  chunks_.resize((end - begin + kChunkSize - 1) / kChunkSize);
  for (Chunk& chunk : chunks_) {
    const std::size_t next = std::min(begin + kChunkSize, end);
    work_.Push({&pairs, begin, next, &chunk});
    begin = next;
  }
  while (work_.Size() > 0) work_.Pop();
  return chunks_;
}

void PairScan::JudgePart(const Part& part,
                         DU::LightPathCalculator& lightPath) const {
  ThrowIfInterrupted();
  const Pairs& pairs = *part.pairs;
  Chunk& chunk = *part.chunk;
  chunk.verdicts.clear();
  chunk.verdictText.clear();
  chunk.pathText.clear();
  for (std::size_t pair = part.begin; pair < part.end; ++pair) {
    const TVector3& event = pairs.Event(pair).position;
    const TVector3& pmt = pairs.PMT(pair).position;
    lightPath.CalcByPosition(event, pmt);
    Take(pairs, pair, lightPath, chunk);
    if (!settings_.withReflections) continue;
    lightPath.CalcReflectionByPosition(event, pmt);
    if (lightPath.HasPath()) Take(pairs, pair, lightPath, chunk);
  }
}

void PairScan::Take(const Pairs& pairs, std::size_t pair,
                    const DU::LightPathCalculator& lightPath,
                    Chunk& chunk) const {
  PathVerdict verdict;
  verdict.type = lightPath.GetLightPathType();
  if (verdict.HasPath()) {
    verdict.by = shadowing_.FindShadowing(lightPath.GetLightPath());
  }
  chunk.verdicts.push_back(verdict);
  if (settings_.withVerdictText) {
    AppendPair(chunk.verdictText, pairs, pair);
    AppendVerdict(chunk.verdictText, verdict);
  }
  if (settings_.withPathText && verdict.HasPath()) {
    AppendPair(chunk.pathText, pairs, pair);
    AppendLightPath(chunk.pathText, lightPath.GetLightPath());
    chunk.pathText += '\n';
  }
}

}  // namespace ZARN::App
