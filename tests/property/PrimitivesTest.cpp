#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "du/geometry/Primitives.hpp"
#include "du/hardware/GeometryTables.hpp"
#include "log/Log.hpp"
#include "tests/property/Random.hpp"
#include "tests/property/SameBits.hpp"
#include "tests/property/TextSink.hpp"
#include "tests/reference/PlainShadowingCalculator.hpp"
#include "tests/support/SpecialNumbers.hpp"
#include "tests/support/Tables.hpp"

// The calculator uses only some results of the primitives (for example never a
// near crossing), so they are also compared directly.

namespace ZARN::Testing {
namespace {

constexpr int kCalls = 300000;

/// The plain calculator, and the messages of both sides.
class Primitives : public testing::Test {
 protected:
  Primitives() : plain_(plainWarn_, plainDebug_) {
    warn.SetOutput(&warn_);
    debug.SetOutput(&debug_);
    debug.Switch(otext::eState::kOn);
  }
  ~Primitives() override {
    debug.Switch(otext::eState::kSilent);
    warn.SetOutput(nullptr);
    debug.SetOutput(nullptr);
  }

  double Number() {
    constexpr std::array kOdd = {0.0,    -0.0,  1.0,   8500.0,    5e-324,
                                 1e-170, 1e200, 1e308, kInfinity, -kInfinity};
    if (random_.Chance(0.03)) return random_.Pick(kOdd);
    const double size = std::pow(10.0, random_.Uniform(-1.0, 4.0));
    return random_.Uniform(-size, size);
  }

  TVector3 Position() {
    const double x = Number();
    const double y = Number();
    const double z = Number();
    return {x, y, z};
  }

  TVector3 Direction() {
    if (random_.Chance(0.05)) return Position();
    if (random_.Chance(0.05)) return {0.0, 0.0, 1.0};
    return random_.Direction();
  }

  Random random_{2718};
  TextSink warn_;
  TextSink debug_;
  TextSink plainWarn_;
  TextSink plainDebug_;
  Reference::PlainShadowingCalculator plain_;
};

TEST_F(Primitives, CrossSpheresAsThePlainOnesDo) {
  int misses = 0;
  for (int i = 0; i < kCalls; ++i) {
    const TVector3 start = Position();
    const TVector3 direction = Direction();
    const double radius = random_.Chance(0.1) ? start.Mag() : Number();
    const bool nearSolution = random_.Chance(0.5);
    const TVector3 real =
        DU::VectorToSphereEdge(start, direction, radius, nearSolution);
    const TVector3 plain =
        plain_.VectorToSphereEdge(start, direction, radius, nearSolution);
    ASSERT_TRUE(AreSame(real, plain)) << "call " << i;
    ASSERT_EQ(debug_.Text().empty(), plainDebug_.Text().empty()) << i;
    if (!debug_.Text().empty()) ++misses;
    debug_.Empty();
    plainDebug_.Empty();
  }
  EXPECT_GT(misses, kCalls / 20);
  EXPECT_LT(misses, kCalls - kCalls / 20);
}

TEST_F(Primitives, CrossCylindersAsThePlainOnesDo) {
  debug.Switch(otext::eState::kSilent);
  plainDebug_.Switch(false);
  for (int i = 0; i < kCalls; ++i) {
    const TVector3 start = Position();
    const TVector3 direction = Direction();
    const TVector3 shift = random_.Chance(0.5) ? TVector3() : Position();
    const double radius = Number();
    const TVector3 real =
        DU::VectorToCylinderEdge(start, direction, shift, radius);
    const TVector3 plain =
        plain_.VectorToCylinderEdge(start, direction, shift, radius);
    ASSERT_TRUE(AreSame(real, plain)) << "call " << i;
  }
}

TEST_F(Primitives, FindClosestAnglesAsThePlainOnesDo) {
  for (int i = 0; i < kCalls; ++i) {
    const TVector3 position = Position();
    const double radius = random_.Chance(0.1) ? -position.Mag() : Number();
    const double real = DU::ClosestAngle(position, radius);
    const double plain =
        Reference::PlainShadowingCalculator::ClosestAngle(position, radius);
    ASSERT_TRUE(AreSame(real, plain)) << "call " << i;
  }
}

TEST_F(Primitives, FillPositionsAsThePlainOnesDo) {
  for (int i = 0; i < 1000; ++i) {
    Tables tables;
    for (const char* field : {"x", "y", "z"}) {
      std::vector<double> numbers(random_.Chance(0.8) ? 3 : random_.Below(5));
      for (double& number : numbers) number = Number();
      tables.Set("T", "i", field, numbers);
    }
    tables.Load();
    // Old contents are replaced if the arrays have the same length, and kept
    // otherwise.
    std::vector<TVector3> real(random_.Below(5), TVector3(1, 2, 3));
    std::vector<TVector3> plain = real;
    DU::FillXYZPositions(DB::Get(), real, "T", "i", "x", "y", "z");
    plain_.FillXYZPositions(plain, "T", "i", "x", "y", "z");
    ASSERT_EQ(real.size(), plain.size()) << "call " << i;
    for (std::size_t k = 0; k < real.size(); ++k) {
      ASSERT_TRUE(AreSame(real[k], plain[k])) << "call " << i;
    }
    ASSERT_EQ(warn_.Text(), plainWarn_.Text()) << "call " << i;
  }
  EXPECT_FALSE(warn_.Text().empty());
}

}  // namespace
}  // namespace ZARN::Testing
