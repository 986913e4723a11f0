#pragma once

#include "du/ShadowingCalculator.hpp"
#include "du/fast/HardwareFormulas.hpp"
#include "tests/du/Paths.hpp"

namespace ZARN::Testing {

/// The formulas of a detector for one path, as a filter calls them, with a
/// count of the calls.
class Formulas {
 public:
  Formulas(const DU::ShadowingCalculator& detector, const DU::LightPath& path)
      : hardware_(detector.GetHardware()),
        segments_(SegmentsOf(path)),
        views_(DU::ViewsOf(segments_)) {}
  Formulas(const Formulas&) = delete;
  Formulas& operator=(const Formulas&) = delete;

  bool operator()(DU::eShadowingComponent component) const {
    ++asked_;
    return DU::HardwareFormulas{hardware_, views_}(component);
  }
  bool operator()(DU::eShadowingComponent component,
                  const DU::SegmentView& segment) const {
    ++asked_;
    return DU::HardwareFormulas{hardware_, views_}(component, segment);
  }

  /// The verdict without a filter.
  DU::eShadowingComponent Find() const {
    return hardware_.FirstBlocking(segments_, DU::eDiagnostics::kSilent);
  }

  int Asked() const { return asked_; }

 private:
  const DU::Hardware& hardware_;
  DU::WaterSegments segments_;
  DU::WaterSegmentViews views_;
  mutable int asked_ = 0;
};

/// The verdict of the formulas on a path, from the current models, flags and
/// tolerances of a calculator.
inline DU::eShadowingComponent FindByFormulas(
    const DU::ShadowingCalculator& detector, const DU::LightPath& path) {
  return Formulas(detector, path).Find();
}

}  // namespace ZARN::Testing
