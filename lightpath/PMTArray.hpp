#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "TVector3.h"

namespace ZARN::DU {

/// The positions of many PMTs, prepared once for calculations that join each of
/// many events to all of them.
///
/// PMTs at nearly the same distance from the centre form a group: one table of
/// light rays serves them all. A detector whose PMTs have one distance is one
/// group; distances that vary without steps are divided into a few. Within a
/// group neighbours stand together, so that what is decided for one direction
/// is mostly decided for a whole patch of them.
class PMTArray {
 public:
  /// The largest number of PMTs in a patch.
  static constexpr std::size_t kMostInPatch = 64;

  /// PMTs of a group that are near each other, seen from the centre: those with
  /// the indexes begin to before end.
  struct Patch {
    std::size_t begin;
    std::size_t end;
    TVector3 axis;  ///< unit vector
    double cosine;  ///< of the largest angle between a PMT and the axis
    double sine;
  };

  /// PMTs at nearly the same distance: those with the indexes begin to before
  /// end of Order() and of the columns.
  struct Group {
    std::size_t begin;
    std::size_t end;
    double lowest;                    ///< distance from the centre, mm
    double highest;                   ///< mm
    std::vector<Patch> patches = {};  ///< in order; together all of its PMTs

    /// Whether one correction of a ray is enough for all of them.
    bool IsNarrow() const { return highest <= lowest * (1.0 + kNarrow); }
  };
  /// The relative width of a narrow group.
  static constexpr double kNarrow = 1e-6;

  PMTArray() = default;
  /// @param positions  mm, any values, also not finite ones
  explicit PMTArray(std::vector<TVector3> positions);

  std::size_t Count() const { return positions_.size(); }
  const TVector3& At(std::size_t pmt) const { return positions_[pmt]; }

  const std::vector<Group>& Groups() const { return groups_; }
  /// The numbers of the PMTs, group by group, then those of the PMTs in no
  /// group: at the centre, farther away than any detector, or not finite.
  const std::vector<std::uint32_t>& Order() const { return order_; }

  // Of the PMTs in the groups, in this order: unit vectors from the centre, and
  // inverse distances from it, 1/mm.
  const std::vector<double>& X() const { return x_; }
  const std::vector<double>& Y() const { return y_; }
  const std::vector<double>& Z() const { return z_; }
  const std::vector<double>& InverseRadius() const { return inverseRadius_; }

 private:
  void MakeGroups(const std::vector<double>& radii);
  void MakePatches(Group& group, std::size_t begin, std::size_t end,
                   const std::vector<TVector3>& directions);

  std::vector<TVector3> positions_;
  std::vector<Group> groups_;
  std::vector<std::uint32_t> order_;
  std::vector<double> x_;
  std::vector<double> y_;
  std::vector<double> z_;
  std::vector<double> inverseRadius_;
};

}  // namespace ZARN::DU
