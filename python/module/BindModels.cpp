#include <nanobind/stl/string.h>

#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

using Points =
    nb::ndarray<nb::numpy, const double, nb::shape<-1, 3>, nb::device::cpu>;
using Numbers = nb::ndarray<nb::numpy, const double, nb::ndim<1>>;

/// The points themselves, read-only; the array keeps @p owner alive.
Points ViewOf(const std::vector<TVector3>& points, nb::handle owner) {
  static_assert(sizeof(TVector3) % sizeof(double) == 0);
  constexpr auto kStride =
      static_cast<std::int64_t>(sizeof(TVector3) / sizeof(double));
  // The coordinates are adjacent; only the operator for changing them tells
  // where.
  const double* const first =
      points.empty() ? nullptr
                     : &const_cast<TVector3&>(points.front())[0];  // NOLINT
  return Points(first, {points.size(), 3}, owner, {kStride, 1});
}

Numbers ViewOf(const std::vector<double>& numbers, nb::handle owner) {
  return Numbers(numbers.data(), {numbers.size()}, owner);
}

/// A property that is a view of a list of a model.
template <class Model, class List>
void AddList(nb::class_<Model>& model, const char* name, List Model::*list,
             const char* description) {
  model.def_prop_ro(
      name,
      [list](nb::handle_t<Model> self) {
        return ViewOf(nb::cast<const Model&>(self).*list, self);
      },
      description);
}

/// A property that is a model; it keeps its calculator alive.
template <class Model>
void AddModel(nb::class_<Calculator>& calculator, const char* name,
              const Model& (DU::ShadowingCalculator::*get)() const) {
  calculator.def_prop_ro(
      name,
      [get](const Calculator& self) -> const Model& {
        return (self.Shadowing().*get)();
      },
      nb::rv_policy::reference_internal);
}

}  // namespace

void BindModels(nb::module_& module, nb::class_<Calculator>& calculator) {
  using DU::AVHDRopeModel, DU::SupportRopeModel, DU::BellyPlateModel,
      DU::NCDAnchorModel, DU::AVPipeModel, DU::NeckBossModel;

  nb::class_<AVHDRopeModel> holdDown(module, "HoldDownRopes",
                                     "The AV hold-down ropes.");
  AddList(
      holdDown, "positions", &AVHDRopeModel::AVHDRopePositions,
      "Points of the rope that all are rotated copies of, mm: array (n, 3).");
  AddList(holdDown, "rolls", &AVHDRopeModel::AVHDRopeRolls,
          "Azimuth of each rope, rad: array (n,).");
  AddList(holdDown, "end_points", &AVHDRopeModel::AVHDRopeEndPoints,
          "Where the ropes leave the vessel, two each, mm: array (2 n, 3).");
  AddList(holdDown, "surface_points", &AVHDRopeModel::AVHDRopeSurfacePoints,
          "Points along the ropes on the vessel, mm: array (n, 3).");
  AddList(holdDown, "leg_points", &AVHDRopeModel::AVHDRopeLegPoints,
          "Points along the ropes below the vessel, mm: array (n, 3).");
  holdDown.def_ro("radius", &AVHDRopeModel::AVHDRopeRadius,
                  "Radius of a rope, mm.");

  nb::class_<SupportRopeModel> support(module, "SupportRopes",
                                       "The AV support ropes.");
  AddList(support, "positions", &SupportRopeModel::SupportRopePositions,
          "Foot of each rope, mm: array (n, 3).");
  AddList(support, "line_points", &SupportRopeModel::SupportRopeLinePoints,
          "Points up the ropes, mm: array (n, 3).");
  support.def_ro("radius", &SupportRopeModel::SupportRopeRadius,
                 "Radius of a rope, mm.");
  support.def_ro("length", &SupportRopeModel::SupportRopeLength,
                 "Length of a rope, mm.");

  nb::class_<BellyPlateModel> plates(module, "BellyPlates",
                                     "The belly plates.");
  AddList(plates, "positions", &BellyPlateModel::BellyPlatePositions,
          "Centres of the plates, mm: array (n, 3).");
  AddList(plates, "grid_points", &BellyPlateModel::BellyPlateGridPoints,
          "A grid on the plates, mm: array (n, 3).");
  plates.def_ro("half_height", &BellyPlateModel::BellyPlateHalfHeight,
                "Half the height of a plate, mm.");

  nb::class_<NCDAnchorModel> anchors(module, "NCDAnchors", "The NCD anchors.");
  AddList(anchors, "positions", &NCDAnchorModel::NCDAnchorPositions,
          "Centres of the anchors, mm: array (n, 3).");
  anchors.def_ro("half_z", &NCDAnchorModel::NCDAnchorHalfZ,
                 "Radius of the spheres that are tested, mm.");
  anchors.def_ro("radius", &NCDAnchorModel::NCDAnchorRadius,
                 "Radius in the tables, mm; the test does not read it.");

  nb::class_<AVPipeModel> pipes(module, "AVPipes", "The AV pipes.");
  AddList(pipes, "points", &AVPipeModel::AVPipePoints,
          "Points along all pipes, mm: array (n, 3).");
  pipes.def_ro("radius", &AVPipeModel::AVPipeRadius,
               "Radius of the pipes 1 to 6, mm.");

  nb::class_<NeckBossModel> boss(module, "NeckBoss", "The neck boss.");
  boss.def_ro("angle", &NeckBossModel::NeckBossAngle,
              "Polar angle of the cap's edge, rad.");

  using DU::ShadowingCalculator;
  AddModel(calculator, "hold_down_ropes", &ShadowingCalculator::GetAVHDRopes);
  AddModel(calculator, "support_ropes", &ShadowingCalculator::GetSupportRopes);
  AddModel(calculator, "belly_plates", &ShadowingCalculator::GetBellyPlates);
  AddModel(calculator, "ncd_anchors", &ShadowingCalculator::GetNCDAnchors);
  AddModel(calculator, "av_pipes", &ShadowingCalculator::GetAVPipes);
  AddModel(calculator, "neck_boss", &ShadowingCalculator::GetNeckBoss);
}

}  // namespace ZARN::Python
