#include "tests/reference/PlainShadowingCalculator.hpp"

#include "db/DB.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::BeginOfRun() {
  AVPipe1Positions.clear();
  AVPipe2Positions.clear();
  AVPipe3Positions.clear();
  AVPipe4Positions.clear();
  AVPipeLABSPositions.clear();
  AVPipe6Positions.clear();
  AVPipeLABRPositions.clear();
  AVPipePoints.clear();
  NCDAnchorPositions.clear();
  BellyPlatePositions.clear();
  BellyPlateGridPoints.clear();
  AVHDRopePositions.clear();
  AVHDRopeRolls.clear();
  AVHDRopeEndPoints.clear();
  AVHDRopeSurfacePoints.clear();
  AVHDRopeLegPoints.clear();
  SupportRopePositions.clear();
  SupportRopeLinePoints.clear();

  InnerAVRadius =
      DB::Get().GetLink("SOLID", "acrylic_vessel_inner", -1)->GetD("r_sphere");
  OuterAVRadius =
      DB::Get().GetLink("SOLID", "acrylic_vessel_outer", -1)->GetD("r_sphere");
  AVNeckRadius =
      DB::Get().GetLink("SOLID", "acrylic_vessel_outer", -1)->GetD("r_neck");

  try {
    LoadAVHDRopeInfo();
    AVHDRopeInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded AV hold-down rope shadowing "
             "information.\n";
  } catch (DBNotFoundError&) {
    warn_ << "ShadowingCalculator: Cannot load AV hold-down rope parameters, "
             "these will not be loaded.\n";
    AVHDRopeInfoLoaded = false;
  }
  try {
    LoadSupportRopeInfo();
    SupportRopeInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded AV support rope shadowing "
             "information.\n";
  } catch (DBNotFoundError&) {
    warn_ << "ShadowingCalculator: Cannot load support rope parameters, these "
             "will not be loaded.\n";
    SupportRopeInfoLoaded = false;
  }
  try {
    LoadBellyPlateInfo();
    BellyPlateInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded belly plate shadowing "
             "information.\n";
  } catch (DBNotFoundError&) {
    warn_ << "ShadowingCalculator: Cannot load belly plate parameters, these "
             "will not be loaded.\n";
    BellyPlateInfoLoaded = false;
  }
  try {
    LoadNCDAnchorInfo();
    NCDAnchorInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded NCD anchor shadowing information.\n";
  } catch (DBNotFoundError&) {
    warn_ << "ShadowingCalculator: Cannot load NCD anchor parameters, these "
             "will not be loaded.\n";
    NCDAnchorInfoLoaded = false;
  }
  try {
    LoadAVPipeInfo();
    AVPipeInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded AV pipe shadowing information.\n";
  } catch (DBNotFoundError&) {
    warn_ << "ShadowingCalculator: Cannot load AV pipe parameters, these will "
             "not be loaded.\n";
    AVPipeInfoLoaded = false;
  }
  try {
    LoadNeckBossInfo();
    NeckBossInfoLoaded = true;
    warn_ << "ShadowingCalculator: Loaded neck boss shadowing information.\n";
  } catch (DBNotFoundError&) {
    // The missing word is part of the message.
    warn_ << "ShadowingCalculator: Cannot neck boss parameters, these will not "
             "be loaded.\n";
    NeckBossInfoLoaded = false;
  }

  ShadowedByAVHDRope = false;
  ShadowedByBellyPlate = false;
  ShadowedByNCDAnchor = false;
  ShadowedBySupportRope = false;
  ShadowedByAVPipe = false;
  ShadowedByNeckBoss = false;

  AVHDRopeTolerance = 150.0;
  SupportRopeTolerance = 150.0;
  BellyPlateTolerance = 150.0;
  NCDAnchorTolerance = 150.0;
  AVPipeTolerance = 150.0;
  NeckBossTolerance = 150.0;
}

void PlainShadowingCalculator::SetAllGeometryTolerances(double tolerance) {
  AVHDRopeTolerance = tolerance;
  SupportRopeTolerance = tolerance;
  BellyPlateTolerance = tolerance;
  NCDAnchorTolerance = tolerance;
  AVPipeTolerance = tolerance;
  NeckBossTolerance = tolerance;
}

bool PlainShadowingCalculator::CheckForShadowing(
    DU::LightPathCalculator& lightPath) {
  ShadowedByAVHDRope = false;
  ShadowedByBellyPlate = false;
  ShadowedByNCDAnchor = false;
  ShadowedBySupportRope = false;
  ShadowedByAVPipe = false;
  ShadowedByNeckBoss = false;
  Shadowed = false;

  if (AVHDRopeInfoLoaded) {
    if (CheckForAVHDRopeShadowing(lightPath)) {
      Shadowed = true;
      ShadowedByAVHDRope = true;
      return true;
    }
  }
  if (SupportRopeInfoLoaded) {
    if (CheckForSupportRopeShadowing(lightPath)) {
      Shadowed = true;
      ShadowedBySupportRope = true;
      return true;
    }
  }
  if (BellyPlateInfoLoaded) {
    if (CheckForBellyPlateShadowing(lightPath)) {
      Shadowed = true;
      ShadowedByBellyPlate = true;
      return true;
    }
  }
  if (NCDAnchorInfoLoaded) {
    if (CheckForNCDAnchorShadowing(lightPath)) {
      Shadowed = true;
      ShadowedByNCDAnchor = true;
      return true;
    }
  }
  if (AVPipeInfoLoaded) {
    if (CheckForAVPipeShadowing(lightPath)) {
      Shadowed = true;
      ShadowedByAVPipe = true;
      return true;
    }
  }
  if (NeckBossInfoLoaded) {
    if (CheckForNeckBossShadowing(lightPath)) {
      Shadowed = true;
      ShadowedByNeckBoss = true;
      return true;
    }
  }
  Shadowed = false;
  return false;
}

void PlainShadowingCalculator::FillXYZPositions(
    std::vector<TVector3>& positions, const std::string& table,
    const std::string& index, const std::string& xField,
    const std::string& yField, const std::string& zField) {
  const std::vector<double> x =
      DB::Get().GetLink(table, index, -1)->GetDArray(xField);
  const std::vector<double> y =
      DB::Get().GetLink(table, index, -1)->GetDArray(yField);
  const std::vector<double> z =
      DB::Get().GetLink(table, index, -1)->GetDArray(zField);
  if (x.size() != y.size() || x.size() != z.size()) {
    warn_ << "ShadowingCalculator::FillXYZPositions: Inequal number of "
             "elements across the (X,Y,Z) coordinate arrays!\n";
    warn_ << "(X,Y,Z) positions not initialised for (" << table << ", " << index
          << ").\n";
    return;
  }
  positions.clear();
  positions.reserve(x.size());
  for (int i = 0; i < static_cast<int>(x.size()); i++) {
    const auto n = static_cast<std::size_t>(i);
    positions.emplace_back(x[n], y[n], z[n]);
  }
}

}  // namespace ZARN::Reference
