#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "TVector3.h"
#include "du/geometry/Answer.hpp"
#include "du/geometry/BoxTest.hpp"
#include "du/geometry/CellItems.hpp"
#include "du/geometry/OctahedralPlace.hpp"

namespace ZARN::DU {

/// The tests that look only at the point where a path crosses the vessel.
enum class eMappedTest {
  kHoldDownSurface,  ///< the ropes' stretch on the sphere, above their ends
  kBellyPlate,
  kNCDAnchor,
  kAVPipe,
  kNeckBoss
};
inline constexpr std::size_t kMappedTests = 5;
static_assert(static_cast<std::size_t>(eMappedTest::kNeckBoss) ==
              kMappedTests - 1);

/// The number of combinations of the answers of all tests.
constexpr std::size_t CountCellAnswers() {
  std::size_t count = 1;
  for (std::size_t i = 0; i < kMappedTests; ++i) count *= 3;
  return count;
}

/// For every number with kMappedTests digits in base 3, its digits as answers,
/// the last digit first.
constexpr auto MakeCellAnswers() {
  std::array<std::array<eAnswer, kMappedTests>, CountCellAnswers()> answers =
      {};
  for (std::size_t number = 0; number < answers.size(); ++number) {
    std::size_t rest = number;
    for (eAnswer& answer : answers[number]) {
      answer = static_cast<eAnswer>(rest % 3);
      rest /= 3;
    }
  }
  return answers;
}
inline constexpr auto kCellAnswers = MakeCellAnswers();

/// The outer vessel sphere in cells, each with the answer of every test that
/// looks only at a crossing point: the whole cell blocks, none of it does, or
/// the test has to decide.
///
/// Decides for points within kShell of the sphere that it was made for; all
/// other points are unsure. An answer holds for a box (or a ball) around the
/// cell, with the shell and with a margin for the rounding of the cell's number
/// in single precision. So it holds for every point that is assigned to the
/// cell.
///
/// For each test a quadtree over the octahedral square fills large squares with
/// one answer; only the borders of shadows are divided into single cells. For
/// an unsure cell the map lists the few entries that can block there.
class ShadowMap {
 public:
  /// Real crossings are within 1e-9 of the sphere; tables of paths are often
  /// rounded to a fraction of a millimetre.
  static constexpr double kShell = 1.0;  // mm
  static constexpr int kCells = 768;     // along each side

  // Radii of the spheres that a map can have, mm.
  static constexpr double kSmallestRadius = 10.0;
  static constexpr double kLargestRadius = 1e5;

  using Tests = std::array<const BoxTest*, kMappedTests>;
  /// The answers of one cell, in base 3: kMappedTests digits.
  using Code = std::uint8_t;
  static_assert(kCellAnswers.size() - 1 <= std::numeric_limits<Code>::max());

  /// A map in which all points are unsure.
  ShadowMap() : ShadowMap(0.0, {}) {}
  /// @param radius  of the sphere, mm; outside kSmallestRadius to
  ///                kLargestRadius all points are unsure
  /// @param tests   a null pointer is a test that is off: it never blocks
  /// @param cells   along each side: at least 4, and 2 or 3 times a power of 2
  ShadowMap(double radius, const Tests& tests, int cells = kCells);

  /// The cell of a point, or OffMap().
  std::size_t CellAt(const TVector3& point) const {
    const double r2 = point.Mag2();
    if (!(r2 > lowest2_ && r2 < highest2_)) return OffMap();
    return static_cast<std::size_t>(CellOf(point.X(), point.Y(), point.Z()));
  }

  /// The number that stands for all points outside the shell.
  std::size_t OffMap() const { return codes_.size() - 1; }

  Code At(std::size_t cell) const { return codes_[cell]; }
  Code At(const TVector3& point) const { return At(CellAt(point)); }

  /// The entries that are enough to decide for a point in a cell, for every
  /// unsure cell of a test that has entries; an empty list means all entries.
  const CellItems& Open(eMappedTest test) const {
    return open_[static_cast<std::size_t>(test)];
  }

  template <class Real>
  int CellOf(Real x, Real y, Real z) const {
    const auto place = PlaceOf(x, y, z);
    const Real half = static_cast<Real>(cells_) / Real(2);
    return CellAlong(place.v, half, cells_) * cells_ +
           CellAlong(place.u, half, cells_);
  }

  static eAnswer AnswerOf(Code code, eMappedTest test) {
    return kCellAnswers[code][static_cast<std::size_t>(test)];
  }

  int Cells() const { return cells_; }
  /// Row by row, and after the last row kNothingKnown for points outside the
  /// shell.
  const std::vector<Code>& Codes() const { return codes_; }
  double Lowest2() const { return lowest2_; }    ///< of the shell, mm^2
  double Highest2() const { return highest2_; }  ///< mm^2

  static constexpr Code kNothingKnown = 1 + 3 + 9 + 27 + 81;

 private:
  int cells_ = 0;
  double lowest2_ = 0.0;
  double highest2_ = 0.0;
  std::vector<Code> codes_ = {kNothingKnown};  // row by row; see Codes
  std::array<CellItems, kMappedTests> open_;
};

}  // namespace ZARN::DU
