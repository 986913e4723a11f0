#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "TVector3.h"
#include "du/geometry/Answer.hpp"
#include "du/geometry/BallTest.hpp"
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

/// How many answers all tests together can give.
constexpr std::size_t CountCellAnswers() {
  std::size_t count = 1;
  for (std::size_t i = 0; i < kMappedTests; ++i) count *= 3;
  return count;
}

/// Of every number with kMappedTests digits in base 3 the digits, from the
/// last, as answers.
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
/// the test has to be asked.
///
/// Decides for points within kShell of the sphere that it was made for; all
/// other points are unsure. An answer covers the whole ball around a cell (and
/// the shell, and a margin for the rounding of the cell's number in single
/// precision), so it holds for every point that falls into the cell.
///
/// For each test a quadtree over the octahedral square fills what is surely the
/// same in large pieces; only the borders of shadows are divided down to single
/// cells. Where a test has to be asked there, the few entries are known that
/// can block.
class ShadowMap {
 public:
  /// Real crossings are within 1e-9 of the sphere; tables of paths are often
  /// rounded to a fraction of a millimetre.
  static constexpr double kShell = 1.0;  // mm
  static constexpr int kCells = 1024;  // along each side

  using Tests = std::array<const BallTest*, kMappedTests>;
  /// The answers of one cell, in base 3: kMappedTests digits.
  using Code = std::uint8_t;
  static_assert(kCellAnswers.size() - 1 <= std::numeric_limits<Code>::max());

  /// A map that knows nothing.
  ShadowMap() : ShadowMap(0.0, {}) {}
  /// @param radius  of the sphere, mm; unless it is from 10 mm to 100 m the
  ///                map knows nothing
  /// @param tests   a null one is off: it never blocks
  /// @param cells   along each side: 4 times a power of 2
  ShadowMap(double radius, const Tests& tests, int cells = kCells);

  /// The cell that a point falls into, or OffMap().
  std::size_t CellAt(const TVector3& point) const {
    const double r2 = point.Mag2();
    if (!(r2 > lowest2_ && r2 < highest2_)) return OffMap();
    return static_cast<std::size_t>(CellOf(point.X(), point.Y(), point.Z()));
  }

  /// Stands for all points off the shell.
  std::size_t OffMap() const { return codes_.size() - 1; }

  Code At(std::size_t cell) const { return codes_[cell]; }
  Code At(const TVector3& point) const { return At(CellAt(point)); }

  /// Entries that suffice to decide for a point in a cell, for every cell on
  /// the map in which a test that has entries is unsure; none if that takes
  /// all.
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
  /// Row by row; behind the last one stands kNothingKnown once more, for points
  /// off the shell.
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
