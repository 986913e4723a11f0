#include "du/fast/LazyLayers.hpp"

namespace ZARN::DU {
namespace {

// The time that the formulas take, and that making the layers takes, measured
// on the reference detector and on copies of its parts. The unit is the time of
// a formula for one surface point (about 5 ns). Rough values are enough: they
// decide when the layers are made, never a verdict.
constexpr std::uint64_t kCostOfRope = 8;    // two angles
constexpr std::uint64_t kCostOfPlate = 80;  // frame and angles
constexpr std::uint64_t kCostOfPath = 20;   // pipes, boss, copies
constexpr std::uint64_t kCostOfMap = 1'600'000;
constexpr std::uint64_t kCostOfMappedPoint = 50;

}  // namespace

LazyLayers::LazyLayers(const Hardware& hardware, const ShadowingLayers& wanted)
    : wanted_(wanted) {
  const std::uint64_t points = hardware.AVHDRopes.AVHDRopeSurfacePoints.size() +
                               hardware.NCDAnchors.NCDAnchorPositions.size();
  const std::uint64_t ropes = hardware.AVHDRopes.AVHDRopeRolls.size() +
                              hardware.SupportRopes.SupportRopePositions.size();
  const std::uint64_t plates = hardware.BellyPlates.BellyPlatePositions.size();
  costOfMaking_ = kCostOfMap + kCostOfMappedPoint * (points + ropes + plates);
  costInWater_ = kCostOfPath + kCostOfRope * ropes;
  costOfCrossing_ = costInWater_ + points + kCostOfPlate * plates;
}

void LazyLayers::CountByFormulas(const Hardware& hardware, ePathKind kind) {
  if (layers_.WasTried()) return;
  const std::uint64_t cost =
      kind == ePathKind::kWater ? costInWater_ : costOfCrossing_;
  const std::uint64_t spent =
      spent_.fetch_add(cost, std::memory_order_relaxed) + cost;
  if (spent >= costOfMaking_) Make(hardware);
}

}  // namespace ZARN::DU
