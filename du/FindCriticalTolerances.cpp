#include "du/ShadowingCalculator.hpp"
#include "du/fast/MadeOnce.hpp"
#include "du/fast/NearestHardware.hpp"

namespace ZARN::DU {
namespace {

/// By the nearest items; without them, by all.
double FindOn(const Hardware& hardware, eShadowingComponent component,
              const WaterSegments& segments, const NearestHardware* nearest) {
  return nearest != nullptr ? CriticalTolerance(hardware, component, segments,
                                                *nearest, nearest->Outlines())
                            : CriticalTolerance(hardware, component, segments);
}

}  // namespace

const NearestHardware* ShadowingCalculator::FindNearestHardware() const {
  if (Nearest == nullptr) return nullptr;
  Nearest->Make(Parts);
  return Nearest->Get();
}

double ShadowingCalculator::FindCriticalTolerance(
    const LightPath& path, eShadowingComponent component) const {
  return FindOn(Parts, component,
                SegmentsOf(path, ShapeOfType(path.LightPathType)),
                FindNearestHardware());
}

CriticalTolerances ShadowingCalculator::FindCriticalTolerances(
    const LightPath& path) const {
  const WaterSegments segments =
      SegmentsOf(path, ShapeOfType(path.LightPathType));
  const NearestHardware* const nearest = FindNearestHardware();
  CriticalTolerances tolerances;
  for (std::size_t i = 0; i < kNumberOfComponents; ++i) {
    tolerances.of[i] =
        FindOn(Parts, kShadowingComponents[i], segments, nearest);
  }
  return tolerances;
}

}  // namespace ZARN::DU
