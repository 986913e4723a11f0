#include "du/geometry/Diagnostics.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "du/geometry/Primitives.hpp"
#include "tests/du/PrintVectors.hpp"
#include "tests/du/RootWarnings.hpp"
#include "tests/support/Captured.hpp"

namespace ZARN::DU {
namespace {

using Testing::Captured;
using Testing::RootWarnings;

/// Expect an operation to write messages only if it may, and to give the same
/// vector to the last bit either way.
template <class Operation>
void ExpectSameInSilence(const Operation& operation) {
  Captured diagnostics(debug);
  const RootWarnings warnings;
  const TVector3 expected = operation(eDiagnostics::kWritten);
  EXPECT_NE(diagnostics.Take().size() + RootWarnings::Messages().size(), 0U);
  RootWarnings::Messages().clear();
  const TVector3 silent = operation(eDiagnostics::kSilent);
  EXPECT_EQ(diagnostics.Take(), "");
  EXPECT_TRUE(RootWarnings::Messages().empty());
  for (int i = 0; i < 3; ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(silent[i]));
    } else {
      EXPECT_EQ(silent[i], expected[i]);
    }
  }
}

TEST(Diagnostics, OfALineThatMissesASphereCanBeSwitchedOff) {
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return VectorToSphereEdge({0, 0, 9000}, {1, 0, 0}, 8500.0, false,
                              diagnostics);
  });
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return VectorToSphereEdge({1, 2, 3}, {1, 0, 0}, std::nan(""), true,
                              diagnostics);
  });
}

TEST(Diagnostics, OfALineThatMissesACylinderCanBeSwitchedOff) {
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return VectorToCylinderEdge({0, 7000, 3}, {1, 0, 0.5}, {1, 2, 3}, 6000.0,
                                diagnostics);
  });
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return VectorToCylinderEdge({0, 7000, 3}, {1, std::nan(""), 0.5}, {},
                                6000.0, diagnostics);
  });
}

TEST(Diagnostics, OfAZeroVectorCanBeSwitchedOff) {
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return WithMag({0, 0, 0}, 10.0, diagnostics);
  });
  // The length of a vector whose square underflows is 0, too.
  ExpectSameInSilence([](eDiagnostics diagnostics) {
    return WithMag({1e-170, 0, -1e-170}, 10.0, diagnostics);
  });
}

TEST(Diagnostics, DoNotChangeOrdinaryResults) {
  EXPECT_EQ(VectorToSphereEdge({-10, 0, 0}, {1, 0, 0}, 5.0, true,
                               eDiagnostics::kSilent),
            TVector3(-5, 0, 0));
  EXPECT_EQ(VectorToCylinderEdge({1, 0, 0}, {1, 0, 0}, {0, 0, 1}, 5.0,
                                 eDiagnostics::kSilent),
            TVector3(5, 0, 1));
  EXPECT_EQ(WithMag({0, 3, 4}, 10.0, eDiagnostics::kSilent), TVector3(0, 6, 8));
}

}  // namespace
}  // namespace ZARN::DU
