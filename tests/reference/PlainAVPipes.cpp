#include "db/DB.hpp"
#include "tests/reference/PlainConstants.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"

namespace ZARN::Reference {

void PlainShadowingCalculator::LoadAVPipeInfo() {
  AVPipeRadius = DB::Get().GetLink("SOLID", "av_pipe-1", -1)->GetD("r_max");
  AVPipeLABSRadius =
      DB::Get().GetLink("SOLID", "av_pipe-labs", -1)->GetD("r_max");
  FillXYZPositions(AVPipe1Positions, "SOLID", "av_pipe-1", "x", "y", "z");
  FillXYZPositions(AVPipe2Positions, "SOLID", "av_pipe-2", "x", "y", "z");
  FillXYZPositions(AVPipe3Positions, "SOLID", "av_pipe-3", "x", "y", "z");
  FillXYZPositions(AVPipe4Positions, "SOLID", "av_pipe-4", "x", "y", "z");
  FillXYZPositions(AVPipeLABSPositions, "SOLID", "av_pipe-labs", "x", "y", "z");
  FillXYZPositions(AVPipe6Positions, "SOLID", "av_pipe-6", "x", "y", "z");
  FillXYZPositions(AVPipeLABRPositions, "SOLID", "av_pipe-labr", "x", "y", "z");

  const std::vector<std::vector<TVector3>> pipes = {
      AVPipe1Positions,   AVPipe2Positions,    AVPipe3Positions,
      AVPipe4Positions,   AVPipeLABSPositions, AVPipe6Positions,
      AVPipeLABRPositions};
  for (const std::vector<TVector3>& pipe : pipes) {
    // Without points the unsigned size - 1 would be huge, and the loop endless.
    if (pipe.empty()) throw DBNotFoundError("an AV pipe without a point");
  }
  for (float i = 0; i < Count(pipes.size()); i += 1.0F) {
    float j = 0;
    while (j < Count(pipes[Index(i)].size() - 1)) {
      const TVector3 a = pipes[Index(i)][Index(j)];
      j += 1.0F;
      const TVector3 b = pipes[Index(i)][Index(j)];
      const TVector3 d = b - a;
      for (double t = 0.0; t <= 100.0; t += 2.0) {
        const double f = t / 100.0;
        AVPipePoints.push_back(a + (d.Mag() * f) * d.Unit());
      }
    }
  }
}

bool PlainShadowingCalculator::CheckForAVPipeShadowing(
    DU::LightPathCalculator& lightPath) {
  TVector3 p1(0, 0, 0);
  TVector3 p2(0, 0, 0);
  const std::string name =
      lightPath.LightPathTypeNames()[lightPath.GetLightPathType()];
  if (name == "Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint2();
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint3();
  } else if (name == "AV->Water") {
    p1 = lightPath.GetAVPoint1();
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint4();
  } else if (name == "Water->AV->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint2();
  } else if (name == "Water") {
    return false;
  } else if (name == "Water->Reflection->Water") {
    p1 = lightPath.GetAVPoint1();
    p2 = lightPath.GetAVPoint1();
  } else if (name == "Light Path Uninitialised") {
    warn_ << "ShadowingCalculator::CheckForAVHDRopeShadowing: LightPath is "
             "uninitialised, call CalcByPosition first before checking for "
             "shadowing!\n";
    return false;
  }

  double theta = kDegreesPerRadian * p1.Theta();
  double phi = kDegreesPerRadian * p1.Phi();
  if (75.0 > phi || phi > 105.0) {
    return false;
  }
  if (theta < 30.0 && (75.0 > phi || phi > 105.0)) {
    return false;
  }
  if (theta >= 30.0 && 120.0 > theta && (80.0 > phi || phi > 100.0)) {
    return false;
  }
  if (theta >= 120.0 && (85.0 > phi || phi > 95.0)) {
    return false;
  }

  if (name == "Scint/InnerAV->AV->Water") {
    return true;
  } else if (name == "AV->Scint/InnerAV->AV->Water") {
    return true;
  } else if (name == "AV->Water") {
    return true;
  } else if (name == "Water") {
    return true;
  } else if (name == "Water->AV->Scint/InnerAV->AV->Water") {
  } else if (name == "Water->AV->Water") {
  } else if (name == "Water->Reflection->Water") {
  } else {
    return false;
  }

  // The first point again: the second crossing is not tested.
  theta = kDegreesPerRadian * p1.Theta();
  phi = kDegreesPerRadian * p1.Phi();
  if (75.0 > phi || phi > 105.0) {
    return false;
  }
  if (theta < 30.0 && (75.0 > phi || phi > 105.0)) {
    return false;
  }
  if (theta >= 30.0 && 120.0 > theta && (80.0 > phi || phi > 100.0)) {
    return false;
  }
  if (theta >= 120.0 && (85.0 > phi || phi > 95.0)) {
    return false;
  }
  return true;
}

}  // namespace ZARN::Reference
