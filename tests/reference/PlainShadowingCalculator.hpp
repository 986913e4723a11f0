#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "TVector3.h"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::Reference {

/// A second implementation of the shadowing calculator, without regard to speed
/// or shared structure: each test compares the names one by one and loops over
/// complete lists. It shares no code with the real calculator, so a mistake in
/// one of them shows as a difference.
///
/// Everything is public: the property tests compare all of it. Lengths in mm,
/// angles in rad.
class PlainShadowingCalculator {
 public:
  /// @param warn   receives what the real calculator writes to ZARN::warn
  /// @param debug  receives what it writes to ZARN::debug
  PlainShadowingCalculator(std::ostream& warn, std::ostream& debug)
      : warn_(warn), debug_(debug) {}

  void BeginOfRun();
  void SetAllGeometryTolerances(double tolerance);
  bool CheckForShadowing(DU::LightPathCalculator& lightPath);

  void LoadAVHDRopeInfo();
  void LoadSupportRopeInfo();
  void LoadBellyPlateInfo();
  void LoadNCDAnchorInfo();
  void LoadAVPipeInfo();
  void LoadNeckBossInfo();

  bool CheckForAVHDRopeShadowing(DU::LightPathCalculator& lightPath);
  bool CheckForSupportRopeShadowing(DU::LightPathCalculator& lightPath);
  bool CheckForBellyPlateShadowing(DU::LightPathCalculator& lightPath);
  bool CheckForNCDAnchorShadowing(DU::LightPathCalculator& lightPath);
  bool CheckForAVPipeShadowing(DU::LightPathCalculator& lightPath);
  bool CheckForNeckBossShadowing(DU::LightPathCalculator& lightPath);

  void FillXYZPositions(std::vector<TVector3>& positions,
                        const std::string& table, const std::string& index,
                        const std::string& xField, const std::string& yField,
                        const std::string& zField);
  TVector3 VectorToSphereEdge(const TVector3& startPos,
                              const TVector3& direction, double radius,
                              bool nearSolution);
  TVector3 VectorToCylinderEdge(const TVector3& startPos,
                                const TVector3& direction,
                                const TVector3& shift, double radius);
  static double ClosestAngle(const TVector3& position, double radius);

  bool ShadowedByAVHDRope = false;
  bool ShadowedByBellyPlate = false;
  bool ShadowedByNCDAnchor = false;
  bool ShadowedBySupportRope = false;
  bool ShadowedByAVPipe = false;
  bool ShadowedByNeckBoss = false;
  bool Shadowed = false;

  double AVHDRopeTolerance = 150.0;
  double SupportRopeTolerance = 150.0;
  double BellyPlateTolerance = 150.0;
  double NCDAnchorTolerance = 150.0;
  double AVPipeTolerance = 150.0;
  double NeckBossTolerance = 150.0;

  double InnerAVRadius = 0.0;
  double OuterAVRadius = 0.0;
  double AVNeckRadius = 0.0;

  bool AVPipeInfoLoaded = false;
  std::vector<TVector3> AVPipe1Positions;
  std::vector<TVector3> AVPipe2Positions;
  std::vector<TVector3> AVPipe3Positions;
  std::vector<TVector3> AVPipe4Positions;
  std::vector<TVector3> AVPipeLABSPositions;
  std::vector<TVector3> AVPipe6Positions;
  std::vector<TVector3> AVPipeLABRPositions;
  std::vector<TVector3> AVPipePoints;
  double AVPipeRadius = 0.0;
  double AVPipeLABSRadius = 0.0;

  bool NCDAnchorInfoLoaded = false;
  std::vector<TVector3> NCDAnchorPositions;
  double NCDAnchorHalfZ = 0.0;
  double NCDAnchorRadius = 0.0;

  bool BellyPlateInfoLoaded = false;
  std::vector<TVector3> BellyPlatePositions;
  std::vector<TVector3> BellyPlateGridPoints;
  double BellyPlateHalfHeight = 0.0;

  bool AVHDRopeInfoLoaded = false;
  double AVHDRopeRadius = 0.0;
  std::vector<TVector3> AVHDRopePositions;
  std::vector<double> AVHDRopeRolls;
  std::vector<TVector3> AVHDRopeEndPoints;
  std::vector<TVector3> AVHDRopeSurfacePoints;
  std::vector<TVector3> AVHDRopeLegPoints;

  bool SupportRopeInfoLoaded = false;
  std::vector<TVector3> SupportRopePositions;
  std::vector<TVector3> SupportRopeLinePoints;
  double SupportRopeRadius = 0.0;
  double SupportRopeLength = 0.0;

  bool NeckBossInfoLoaded = false;
  double NeckBossAngle = 0.0;

 private:
  bool IsAVHDRopeSegmentHit(const TVector3& s, const TVector3& v,
                            double angTol);
  bool IsAVHDRopeWaterHit(const TVector3& startPos, const TVector3& endPos,
                          const TVector3& v1, const TVector3& v2,
                          double angTol);
  bool IsAVHDRopeCrossingHit(TVector3 x, const TVector3& t, double angTol);
  bool IsSupportRopeCrossingHit(TVector3 p, double angTol);
  bool IsSupportRopeWaterHit(const TVector3& startPos, const TVector3& endPos,
                             const TVector3& v1, const TVector3& v2,
                             double angTol);
  bool IsBellyPlateHit(const TVector3& x, double dphi);

  std::ostream& warn_;
  std::ostream& debug_;
};

}  // namespace ZARN::Reference
