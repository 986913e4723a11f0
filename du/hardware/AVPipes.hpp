#pragma once

#include <vector>

#include "TVector3.h"
#include "db/TableSet.hpp"
#include "du/hardware/ShadowingTest.hpp"
#include "du/hardware/WaterSegments.hpp"

namespace ZARN::DU {

/// The seven pipes that run down the vessel near azimuth 90 degrees. There is
/// no pipe 5. Lengths in mm.
struct AVPipeModel {
  // Corner points of each pipe's centre line, in the order of the tables.
  std::vector<TVector3> AVPipe1Positions;
  std::vector<TVector3> AVPipe2Positions;
  std::vector<TVector3> AVPipe3Positions;
  std::vector<TVector3> AVPipe4Positions;
  std::vector<TVector3> AVPipeLABSPositions;
  std::vector<TVector3> AVPipe6Positions;
  std::vector<TVector3> AVPipeLABRPositions;
  /// 51 samples along every stretch of every centre line, both ends included.
  /// The test does not read them; they are kept for callers that draw or fit.
  std::vector<TVector3> AVPipePoints;
  double AVPipeRadius = 0.0;
  double AVPipeLABSRadius = 0.0;

  /// Clear all lists but keep their memory; the radii do not change.
  void Clear();
};

/// Read the pipes from SOLID/av_pipe-1 ... av_pipe-labr and append their
/// samples to AVPipePoints.
///
/// @throws ZARN::DBNotFoundError for a missing field, or, after all reads, for
///         a pipe without a point; what was read stays in the model
void LoadAVPipeInfo(const TableSet& tables, AVPipeModel& model);

/// Tell whether the pipes block a path: whether its first crossing lies within
/// a fixed band of azimuth around 90 degrees, which is wider towards the top of
/// the vessel. The positions of the loaded pipes are not used, nor is a second
/// crossing.
bool CheckForAVPipeShadowing(const WaterSegments& path);

/// Visit the test of CheckForAVPipeShadowing.
void VisitAVPipeTests(const WaterSegments& path,
                      const ShadowingTestVisitor& visitor);

/// Whether the pipes block a path whose first crossing is at @p point.
bool IsWithinAVPipeBands(const TVector3& point);

}  // namespace ZARN::DU
