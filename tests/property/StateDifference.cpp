#include "tests/property/StateDifference.hpp"

#include <ios>
#include <sstream>
#include <vector>

#include "TVector3.h"
#include "tests/property/SameBits.hpp"

namespace ZARN::Testing {

namespace {

void Print(std::ostream& out, double value) { out << value; }
void Print(std::ostream& out, bool value) { out << value; }
void Print(std::ostream& out, const TVector3& value) {
  out << "(" << value.X() << ", " << value.Y() << ", " << value.Z() << ")";
}

/// Keeps only the first difference: the others usually follow from it.
class Comparison {
 public:
  template <class Value>
  Comparison& Compare(const char* name, const Value& real, const Value& plain) {
    if (text_.empty() && !AreSame(real, plain)) Tell(name, real, plain);
    return *this;
  }

  template <class Value>
  Comparison& Compare(const char* name, const std::vector<Value>& real,
                      const std::vector<Value>& plain) {
    if (!text_.empty()) return *this;
    if (real.size() != plain.size()) {
      text_ = std::string(name) + ": real has " + std::to_string(real.size()) +
              " elements, plain " + std::to_string(plain.size());
      return *this;
    }
    for (std::size_t i = 0; i < real.size(); ++i) {
      if (AreSame(real[i], plain[i])) continue;
      Tell(std::string(name) + "[" + std::to_string(i) + "]", real[i],
           plain[i]);
      return *this;
    }
    return *this;
  }

  const std::string& Text() const { return text_; }

 private:
  template <class Value>
  void Tell(const std::string& name, const Value& real, const Value& plain) {
    std::ostringstream out;
    out << std::hexfloat << name << ": real ";
    Print(out, real);
    out << ", plain ";
    Print(out, plain);
    text_ = out.str();
  }

  std::string text_;
};

void CompareFlags(Comparison& c, const DU::ShadowingCalculator& real,
                  const Reference::PlainShadowingCalculator& plain) {
  c.Compare("ShadowedByAVHDRope", real.IsShadowedByAVHDRope(),
            plain.ShadowedByAVHDRope);
  c.Compare("ShadowedByBellyPlate", real.IsShadowedByBellyPlate(),
            plain.ShadowedByBellyPlate);
  c.Compare("ShadowedByNCDAnchor", real.IsShadowedByNCDAnchor(),
            plain.ShadowedByNCDAnchor);
  c.Compare("ShadowedBySupportRope", real.IsShadowedBySupportRope(),
            plain.ShadowedBySupportRope);
  c.Compare("ShadowedByAVPipe", real.IsShadowedByAVPipe(),
            plain.ShadowedByAVPipe);
  c.Compare("ShadowedByNeckBoss", real.IsShadowedByNeckBoss(),
            plain.ShadowedByNeckBoss);
  c.Compare("Shadowed", real.IsShadowed(), plain.Shadowed);
  c.Compare("AVPipeInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kAVPipe),
            plain.AVPipeInfoLoaded);
  c.Compare("NCDAnchorInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kNCDAnchor),
            plain.NCDAnchorInfoLoaded);
  c.Compare("BellyPlateInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kBellyPlate),
            plain.BellyPlateInfoLoaded);
  c.Compare("AVHDRopeInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kAVHDRope),
            plain.AVHDRopeInfoLoaded);
  c.Compare("SupportRopeInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kSupportRope),
            plain.SupportRopeInfoLoaded);
  c.Compare("NeckBossInfoLoaded",
            real.IsInfoLoaded(DU::eShadowingComponent::kNeckBoss),
            plain.NeckBossInfoLoaded);
}

void CompareScalars(Comparison& c, const DU::ShadowingCalculator& real,
                    const Reference::PlainShadowingCalculator& plain) {
  c.Compare("AVHDRopeTolerance", real.GetAVHDRopeTolerance(),
            plain.AVHDRopeTolerance);
  c.Compare("SupportRopeTolerance", real.GetSupportRopeTolerance(),
            plain.SupportRopeTolerance);
  c.Compare("BellyPlateTolerance", real.GetBellyPlateTolerance(),
            plain.BellyPlateTolerance);
  c.Compare("NCDAnchorTolerance", real.GetNCDAnchorTolerance(),
            plain.NCDAnchorTolerance);
  c.Compare("AVPipeTolerance", real.GetAVPipeTolerance(),
            plain.AVPipeTolerance);
  c.Compare("NeckBossTolerance", real.GetNeckBossTolerance(),
            plain.NeckBossTolerance);
  c.Compare("InnerAVRadius", real.GetInnerAVRadius(), plain.InnerAVRadius);
  c.Compare("OuterAVRadius", real.GetOuterAVRadius(), plain.OuterAVRadius);
  c.Compare("AVNeckRadius", real.GetAVNeckRadius(), plain.AVNeckRadius);
  c.Compare("AVPipeRadius", real.GetAVPipes().AVPipeRadius, plain.AVPipeRadius);
  c.Compare("AVPipeLABSRadius", real.GetAVPipes().AVPipeLABSRadius,
            plain.AVPipeLABSRadius);
  c.Compare("NCDAnchorHalfZ", real.GetNCDAnchors().NCDAnchorHalfZ,
            plain.NCDAnchorHalfZ);
  c.Compare("NCDAnchorRadius", real.GetNCDAnchors().NCDAnchorRadius,
            plain.NCDAnchorRadius);
  c.Compare("BellyPlateHalfHeight", real.GetBellyPlates().BellyPlateHalfHeight,
            plain.BellyPlateHalfHeight);
  c.Compare("AVHDRopeRadius", real.GetAVHDRopes().AVHDRopeRadius,
            plain.AVHDRopeRadius);
  c.Compare("SupportRopeRadius", real.GetSupportRopes().SupportRopeRadius,
            plain.SupportRopeRadius);
  c.Compare("SupportRopeLength", real.GetSupportRopes().SupportRopeLength,
            plain.SupportRopeLength);
  c.Compare("NeckBossAngle", real.GetNeckBoss().NeckBossAngle,
            plain.NeckBossAngle);
}

void CompareLists(Comparison& c, const DU::ShadowingCalculator& real,
                  const Reference::PlainShadowingCalculator& plain) {
  const DU::AVPipeModel& pipes = real.GetAVPipes();
  c.Compare("AVPipe1Positions", pipes.AVPipe1Positions, plain.AVPipe1Positions);
  c.Compare("AVPipe2Positions", pipes.AVPipe2Positions, plain.AVPipe2Positions);
  c.Compare("AVPipe3Positions", pipes.AVPipe3Positions, plain.AVPipe3Positions);
  c.Compare("AVPipe4Positions", pipes.AVPipe4Positions, plain.AVPipe4Positions);
  c.Compare("AVPipeLABSPositions", pipes.AVPipeLABSPositions,
            plain.AVPipeLABSPositions);
  c.Compare("AVPipe6Positions", pipes.AVPipe6Positions, plain.AVPipe6Positions);
  c.Compare("AVPipeLABRPositions", pipes.AVPipeLABRPositions,
            plain.AVPipeLABRPositions);
  c.Compare("AVPipePoints", pipes.AVPipePoints, plain.AVPipePoints);
  c.Compare("NCDAnchorPositions", real.GetNCDAnchors().NCDAnchorPositions,
            plain.NCDAnchorPositions);
  c.Compare("BellyPlatePositions", real.GetBellyPlates().BellyPlatePositions,
            plain.BellyPlatePositions);
  c.Compare("BellyPlateGridPoints", real.GetBellyPlates().BellyPlateGridPoints,
            plain.BellyPlateGridPoints);
  const DU::AVHDRopeModel& ropes = real.GetAVHDRopes();
  c.Compare("AVHDRopePositions", ropes.AVHDRopePositions,
            plain.AVHDRopePositions);
  c.Compare("AVHDRopeRolls", ropes.AVHDRopeRolls, plain.AVHDRopeRolls);
  c.Compare("AVHDRopeEndPoints", ropes.AVHDRopeEndPoints,
            plain.AVHDRopeEndPoints);
  c.Compare("AVHDRopeSurfacePoints", ropes.AVHDRopeSurfacePoints,
            plain.AVHDRopeSurfacePoints);
  c.Compare("AVHDRopeLegPoints", ropes.AVHDRopeLegPoints,
            plain.AVHDRopeLegPoints);
  c.Compare("SupportRopePositions", real.GetSupportRopes().SupportRopePositions,
            plain.SupportRopePositions);
  c.Compare("SupportRopeLinePoints",
            real.GetSupportRopes().SupportRopeLinePoints,
            plain.SupportRopeLinePoints);
}

}  // namespace

std::string StateDifference(const DU::ShadowingCalculator& real,
                            const Reference::PlainShadowingCalculator& plain) {
  Comparison c;
  CompareFlags(c, real, plain);
  CompareScalars(c, real, plain);
  CompareLists(c, real, plain);
  return c.Text();
}

}  // namespace ZARN::Testing
