#include "app/PairScan.hpp"

#include <algorithm>

#include "app/LightPathText.hpp"
#include "app/ParallelFor.hpp"
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
      lightPaths_(settings.threads, lightPath) {}

const std::vector<PairScan::Chunk>& PairScan::Judge(const Pairs& pairs,
                                                    std::size_t begin,
                                                    std::size_t end) {
  chunks_.resize((end - begin + kChunkSize - 1) / kChunkSize);
  ParallelFor(chunks_.size(), settings_.threads,
              [&](std::size_t i, std::size_t worker) {
                const std::size_t first = begin + i * kChunkSize;
                JudgeChunk(pairs, first, std::min(first + kChunkSize, end),
                           lightPaths_[worker], chunks_[i]);
              });
  return chunks_;
}

void PairScan::JudgeChunk(const Pairs& pairs, std::size_t begin,
                          std::size_t end, DU::LightPathCalculator& lightPath,
                          Chunk& chunk) const {
  ThrowIfInterrupted();
  chunk.verdicts.clear();
  chunk.verdictText.clear();
  chunk.pathText.clear();
  for (std::size_t pair = begin; pair < end; ++pair) {
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
