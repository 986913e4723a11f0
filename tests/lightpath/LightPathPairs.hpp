#pragma once

#include <string>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "tests/property/Random.hpp"
#include "tests/reference/PlainLightTracer.hpp"

/// Pairs of an event and a PMT for the property tests of light paths.
namespace ZARN::Testing {

struct Pair {
  double EventRadius = 0.0;
  double PmtRadius = 0.0;
  double Angle = 0.0;
  bool IsTame = false;         ///< not made to be close to a limit
  Reference::TracedRay Known;  ///< a ray that ends at the PMT, if it has a type

  TVector3 Event;
  TVector3 Pmt;
};

/// Ten to a random power between two limits.
double LogUniform(Random& random, double lowPower, double highPower);

/// An event at its position; the PMT as distance from the centre and angle to
/// the event.
Pair DrawPair(const DU::ConcentricMedia& media, Random& random);

/// Moves the PMT to the end of a traced ray, so that a path exists.
void AimByTracing(Pair& pair, const DU::ConcentricMedia& media, Random& random);

void PlacePmt(Pair& pair, Random& random);

/// Media and positions to the last digit, so that a failure can be replayed.
std::string Replay(const DU::ConcentricMedia& media, const TVector3& eventPos,
                   const TVector3& pmtPos);

/// All results of a calculator.
std::string Describe(const DU::LightPathCalculator& path);

}  // namespace ZARN::Testing
