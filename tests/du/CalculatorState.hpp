#pragma once

#include <cstddef>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "tests/du/Paths.hpp"
#include "tests/support/Captured.hpp"

/// Everything that can be read from a calculator, for comparison as a whole.
namespace ZARN::Testing {

inline constexpr std::size_t kComponents = DU::kShadowingComponents.size();

using Flags = std::vector<bool>;

/// The flags of the six components in the order of testing, then Shadowed.
inline Flags FlagsOf(const DU::ShadowingCalculator& calculator) {
  return {calculator.IsShadowedByAVHDRope(),
          calculator.IsShadowedBySupportRope(),
          calculator.IsShadowedByBellyPlate(),
          calculator.IsShadowedByNCDAnchor(),
          calculator.IsShadowedByAVPipe(),
          calculator.IsShadowedByNeckBoss(),
          calculator.IsShadowed()};
}

inline const Flags kNoFlag(7, false);

/// The flags after a component was found to block a path.
inline Flags FlagsFor(DU::eShadowingComponent component) {
  Flags flags = kNoFlag;
  for (std::size_t i = 0; i < kComponents; ++i) {
    flags[i] = DU::kShadowingComponents[i] == component;
  }
  flags[6] = component != DU::eShadowingComponent::kNone;
  return flags;
}

inline Flags LoadedOf(const DU::ShadowingCalculator& calculator) {
  Flags loaded;
  for (const DU::eShadowingComponent component : DU::kShadowingComponents) {
    loaded.push_back(calculator.IsInfoLoaded(component));
  }
  return loaded;
}

inline const Flags kAllLoaded(kComponents, true);
inline const Flags kNoneLoaded(kComponents, false);

inline std::vector<double> TolerancesOf(
    const DU::ShadowingCalculator& calculator) {
  return {
      calculator.GetAVHDRopeTolerance(),   calculator.GetSupportRopeTolerance(),
      calculator.GetBellyPlateTolerance(), calculator.GetNCDAnchorTolerance(),
      calculator.GetAVPipeTolerance(),     calculator.GetNeckBossTolerance()};
}

/// The lengths of all lists of all models.
inline std::vector<std::size_t> ListSizesOf(
    const DU::ShadowingCalculator& calculator) {
  const DU::AVPipeModel& pipes = calculator.GetAVPipes();
  const DU::AVHDRopeModel& ropes = calculator.GetAVHDRopes();
  const DU::SupportRopeModel& supports = calculator.GetSupportRopes();
  const DU::BellyPlateModel& plates = calculator.GetBellyPlates();
  return {pipes.AVPipe1Positions.size(),
          pipes.AVPipe2Positions.size(),
          pipes.AVPipe3Positions.size(),
          pipes.AVPipe4Positions.size(),
          pipes.AVPipeLABSPositions.size(),
          pipes.AVPipe6Positions.size(),
          pipes.AVPipeLABRPositions.size(),
          pipes.AVPipePoints.size(),
          calculator.GetNCDAnchors().NCDAnchorPositions.size(),
          plates.BellyPlatePositions.size(),
          plates.BellyPlateGridPoints.size(),
          ropes.AVHDRopePositions.size(),
          ropes.AVHDRopeRolls.size(),
          ropes.AVHDRopeEndPoints.size(),
          ropes.AVHDRopeSurfacePoints.size(),
          ropes.AVHDRopeLegPoints.size(),
          supports.SupportRopePositions.size(),
          supports.SupportRopeLinePoints.size()};
}

inline const std::vector<std::size_t> kNoList(18, 0);

/// CheckForShadowing of one path, without its messages.
inline bool Check(DU::ShadowingCalculator& calculator,
                  const DU::LightPath& path) {
  DU::LightPathCalculator lightPath = CalculatorOf(path);
  const Captured captured(warn);
  return calculator.CheckForShadowing(lightPath);
}

}  // namespace ZARN::Testing
