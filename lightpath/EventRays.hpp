#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/Kernels.hpp"
#include "lightpath/PMTArray.hpp"
#include "lightpath/RayKernel.hpp"
#include "lightpath/RayTable.hpp"

namespace ZARN::DU {

/// An event and the PMTs to which its light goes, for whoever traces the rays
/// of a RayTable.
class EventRays {
 public:
  /// Indexes into the columns of a PMTArray.
  using Indexes = std::vector<std::uint32_t>;

  /// The PMTs of a group by the range of a table that they are in.
  struct Sorted {
    Indexes near;
    Indexes far;
    Indexes empty;  ///< no ray gets there
    Indexes open;   ///< not known
  };

  /// @param pmts  must outlive this
  EventRays(const ConcentricMedia& media, const TVector3& eventPos,
            const PMTArray& pmts);

  /// Use this kernel, which must be available. The default is the widest.
  void UseKernel(eKernel kernel) { kernel_ = &RayKernelOf(kernel); }

  const ConcentricMedia& Media() const { return media_; }
  const TVector3& EventPos() const { return eventPos_; }
  double EventRadius() const { return eventRadius_; }
  const RayOrigin& Origin() const { return origin_; }
  const PMTArray& PMTs() const { return pmts_; }
  const RayKernel& Kernel() const { return *kernel_; }

  /// Whether a table of these PMTs saves more than it costs.
  static bool IsWorthATable(const PMTArray::Group& group);

  RayTable TableFor(const PMTArray::Group& group, eLight light,
                    int cells) const {
    return {light,
            media_,
            eventRadius_,
            {group.lowest, 0.5 * (group.lowest + group.highest), group.highest},
            cells};
  }

  /// Sort the PMTs of a group, for its table.
  void Sort(const PMTArray::Group& group, const RayTable& table,
            Sorted& sorted) const;

  /// Copy what a kernel needs of some PMTs to a block.
  void Load(const std::uint32_t* indexes, std::size_t count,
            RayBlock& block) const;

 private:
  ConcentricMedia media_;
  TVector3 eventPos_;
  double eventRadius_;
  RayOrigin origin_ = {0.0, 0.0, 1.0};
  const PMTArray& pmts_;
  const RayKernel* kernel_ = &RayKernelOf(WidestKernel());
};

}  // namespace ZARN::DU
