#include <algorithm>
#include <cstdint>

#include "du/ShadowingCalculator.hpp"
#include "du/fast/EventBatch.hpp"
#include "du/fast/LazyLayers.hpp"
#include "lightpath/PathBetween.hpp"

namespace ZARN::DU {
namespace {

/// The verdict on an event and a PMT between which there is no direct path.
eVerdict WhyNoPath(const ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos) {
  const auto isNear = [](const TVector3& position) {
    return position.Mag() <= LightPathCalculator::kFarthest;  // not for NaN
  };
  if (!isNear(eventPos) || !isNear(pmtPos)) return eVerdict::kPositionNotFinite;
  if (media.At(pmtPos.Mag()) != eMedium::kWater) {
    return eVerdict::kPMTNotInWater;
  }
  return eventPos == pmtPos ? eVerdict::kEventAtPMT
                            : eVerdict::kTotalReflection;
}

/// Compute the exact path between an event and a PMT, and judge it.
eVerdict Judge(const ShadowingCalculator& shadowing,
               const ConcentricMedia& media, eLight kind,
               const TVector3& eventPos, const TVector3& pmtPos,
               LightPath& path) {
  if (kind == eLight::kDirect) {
    FindDirectPath(media, eventPos, pmtPos, path);
  } else {
    FindReflectedPath(media, eventPos, pmtPos, path);
  }
  if (path.LightPathType != kUninitialised) {
    return VerdictOf(shadowing.FindShadowing(path));
  }
  return kind == eLight::kDirect ? WhyNoPath(media, eventPos, pmtPos)
                                 : eVerdict::kNoReflectedPath;
}

}  // namespace

eVerdict ShadowingCalculator::FindVerdict(const LightPathCalculator& light,
                                          const TVector3& eventPos,
                                          const TVector3& pmtPos,
                                          eLight kind) const {
  light.RequireRun();
  LightPath path;
  return Judge(*this, light.GetMedia(), kind, eventPos, pmtPos, path);
}

void ShadowingCalculator::FindVerdicts(const LightPathCalculator& light,
                                       const TVector3& eventPos,
                                       const PMTArray& pmts,
                                       const VerdictRows& rows) const {
  light.RequireRun();
  MakeLayers();
  const PreparedLayers* const layers =
      Layers == nullptr ? nullptr : Layers->Get();
  const std::size_t count = pmts.Count();
  if (layers != nullptr) {
    EventBatch batch(*layers, light.GetMedia(), eventPos, pmts);
    batch.JudgeDirect({AsBatch(rows.direct),
                       static_cast<BatchVerdict>(eVerdict::kTotalReflection),
                       rows.types});
    if (rows.reflected != nullptr) {
      batch.JudgeReflected(
          {AsBatch(rows.reflected),
           static_cast<BatchVerdict>(eVerdict::kNoReflectedPath), nullptr});
    }
  } else {
    // NOLINTNEXTLINE(*.EnumCastOutOfRange): a number that no verdict has
    constexpr auto kOpen = static_cast<eVerdict>(kOpenVerdict);
    std::fill_n(rows.direct, count, kOpen);
    if (rows.reflected != nullptr) std::fill_n(rows.reflected, count, kOpen);
  }

  const ConcentricMedia& media = light.GetMedia();
  LightPath path;
  ForEachOpen(AsBatch(rows.direct), count, [&](std::size_t i) {
    rows.direct[i] =
        Judge(*this, media, eLight::kDirect, eventPos, pmts.At(i), path);
    if (rows.types != nullptr) {
      rows.types[i] = static_cast<std::uint8_t>(path.LightPathType);
    }
  });
  if (rows.reflected == nullptr) return;
  ForEachOpen(AsBatch(rows.reflected), count, [&](std::size_t i) {
    rows.reflected[i] =
        Judge(*this, media, eLight::kReflected, eventPos, pmts.At(i), path);
  });
}

}  // namespace ZARN::DU
