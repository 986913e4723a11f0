#include "du/hardware/AVPipes.hpp"

#include <array>

#include "db/DBErrors.hpp"
#include "db/ReadField.hpp"
#include "du/geometry/Constants.hpp"
#include "du/hardware/GeometryTables.hpp"

namespace ZARN::DU {
namespace {

/// A pipe's name in the tables and its centre line in the model.
struct Pipe {
  const char* index;
  std::vector<TVector3> AVPipeModel::*positions;
};

constexpr std::array<Pipe, 7> kPipes = {{
    {"av_pipe-1", &AVPipeModel::AVPipe1Positions},
    {"av_pipe-2", &AVPipeModel::AVPipe2Positions},
    {"av_pipe-3", &AVPipeModel::AVPipe3Positions},
    {"av_pipe-4", &AVPipeModel::AVPipe4Positions},
    {"av_pipe-labs", &AVPipeModel::AVPipeLABSPositions},
    {"av_pipe-6", &AVPipeModel::AVPipe6Positions},
    {"av_pipe-labr", &AVPipeModel::AVPipeLABRPositions},
}};

/// Append 51 points from @p a to @p b, in steps of 2 % of the distance.
void SampleStretch(const TVector3& a, const TVector3& b,
                   std::vector<TVector3>& points) {
  const TVector3 d = b - a;
  for (double t = 0.0; t <= 100.0; t += 2.0) {
    const double f = t / 100.0;
    points.push_back(a + (d.Mag() * f) * d.Unit());
  }
}

/// The test against the band of azimuth at the height of a crossing, in
/// degrees.
ShadowingTest AVPipeTest(const TVector3& point) {
  const double theta = kDegreesPerRadian * point.Theta();
  const double phi = kDegreesPerRadian * point.Phi();
  const auto test = [&](double low, double high) {
    return ShadowingTest{
        eShadowingRule::kAVPipeBand, eWaterSegment::kFirst, phi, high, 0, low};
  };
  if (theta >= 120.0) return test(85.0, 95.0);
  if (theta >= 30.0) return test(80.0, 100.0);
  return test(75.0, 105.0);
}

template <class Visitor>
bool Walk(const WaterSegments& path, const Visitor& visit) {
  switch (path.kind) {
    case ePathKind::kOneCrossing:
    case ePathKind::kTwoCrossings:
      return visit(AVPipeTest(path.first.point));
    case ePathKind::kWater:
    case ePathKind::kUninitialised:
    case ePathKind::kMisspeltUninitialised:
    case ePathKind::kUnknown:
      break;
  }
  return false;
}

}  // namespace

void AVPipeModel::Clear() {
  for (const Pipe& pipe : kPipes) (this->*pipe.positions).clear();
  AVPipePoints.clear();
}

void LoadAVPipeInfo(const TableSet& tables, AVPipeModel& model) {
  model.AVPipeRadius = ReadNumber(tables, "SOLID", "av_pipe-1", "r_max");
  model.AVPipeLABSRadius = ReadNumber(tables, "SOLID", "av_pipe-labs", "r_max");
  for (const Pipe& pipe : kPipes) {
    FillXYZPositions(tables, model.*pipe.positions, "SOLID", pipe.index, "x",
                     "y", "z");
  }
  for (const Pipe& pipe : kPipes) {
    if ((model.*pipe.positions).empty()) {
      throw DBNotFoundError(std::string("table SOLID, index ") + pipe.index +
                            ": the pipe has no point");
    }
  }

  // Intentional: all lists are counted in single precision.
  for (float i = 0; i < static_cast<float>(kPipes.size()); i += 1.0F) {
    const auto& line = model.*kPipes[static_cast<std::size_t>(i)].positions;
    float j = 0;
    while (j < static_cast<float>(line.size() - 1)) {
      const TVector3& a = line[static_cast<std::size_t>(j)];
      j += 1.0F;
      const TVector3& b = line[static_cast<std::size_t>(j)];
      SampleStretch(a, b, model.AVPipePoints);
    }
  }
}

bool CheckForAVPipeShadowing(const WaterSegments& path) {
  return Walk(path, StopAtBlocking());
}

void VisitAVPipeTests(const WaterSegments& path,
                      const ShadowingTestVisitor& visitor) {
  Walk(path, VisitAll{visitor, nullptr});
}

bool IsWithinAVPipeBands(const TVector3& point) {
  return AVPipeTest(point).IsBlocking();
}

}  // namespace ZARN::DU
