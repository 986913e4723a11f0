#pragma once

#include <algorithm>
#include <array>
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

  /// PMTs that are in the same range of a table.
  struct Part {
    /// Indexes from begin to before end.
    struct Run {
      std::size_t begin;
      std::size_t end;
    };
    std::vector<Run> runs;
    Indexes indexes;  ///< of the others

    void Clear();
    void Append(std::size_t begin, std::size_t end);
  };

  /// The PMTs of a group by the range of a table that they are in.
  struct Sorted {
    Part near;
    Part far;
    Part empty;  ///< no ray gets there
    Part open;   ///< not known
  };

  /// Some PMTs whose rays are traced together.
  struct Block {
    RayPMTs pmts;
    const std::uint32_t* numbers;  ///< of the PMTs in the array
    std::size_t count;             ///< up to kRayBlock
    std::size_t begin;             ///< index of the first, if they are a run
    const std::uint32_t* indexes;  ///< null if they are a run

    std::uint32_t IndexOf(std::size_t i) const {
      return indexes == nullptr ? static_cast<std::uint32_t>(begin + i)
                                : indexes[i];
    }
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

  /// Call @p work(number) with the number of every PMT of a part.
  template <class Work>
  void ForEachNumber(const Part& part, const Work& work) const {
    const std::uint32_t* const order = pmts_.Order().data();
    for (const Part::Run& run : part.runs) {
      std::for_each(order + run.begin, order + run.end, work);
    }
    for (const std::uint32_t index : part.indexes) work(order[index]);
  }

  /// Call @p work(block) until all PMTs of a part were in a block.
  template <class Work>
  void ForEachBlock(const Part& part, const Work& work) const {
    for (const Part::Run& run : part.runs) {
      for (std::size_t i = run.begin; i < run.end; i += kRayBlock) {
        work(BlockOf(i, std::min(kRayBlock, run.end - i)));
      }
    }
    ForEachBlock(part.indexes, work);
  }
  template <class Work>
  void ForEachBlock(const Indexes& indexes, const Work& work) const {
    Copies copies;
    for (std::size_t i = 0; i < indexes.size(); i += kRayBlock) {
      work(BlockOf(indexes.data() + i, std::min(kRayBlock, indexes.size() - i),
                   copies));
    }
  }

 private:
  /// The columns of PMTs that do not stand together.
  struct Copies {
    RayBlock::Lane<double> x, y, z, inverseRadius;
    RayBlock::Lane<std::uint32_t> numbers;
  };

  Block BlockOf(std::size_t begin, std::size_t count) const;
  Block BlockOf(const std::uint32_t* indexes, std::size_t count,
                Copies& copies) const;
  void SortPatch(const PMTArray::Patch& patch, const RayTable& table,
                 Sorted& sorted) const;

  ConcentricMedia media_;
  TVector3 eventPos_;
  double eventRadius_;
  RayOrigin origin_ = {0.0, 0.0, 1.0};
  const PMTArray& pmts_;
  const RayKernel* kernel_ = &RayKernelOf(WidestKernel());
};

}  // namespace ZARN::DU
