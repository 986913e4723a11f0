#pragma once

#include <cstddef>
#include <cstdint>

#include "TVector3.h"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/EventRays.hpp"
#include "lightpath/LightPath.hpp"
#include "lightpath/LightPathRow.hpp"
#include "lightpath/PMTArray.hpp"

namespace ZARN::DU {

/// The direct light paths from one event to many PMTs.
///
/// For an event inside the vessel a RayTable gives the rays, and RayKernel
/// corrects them to the last digits, with a bound. Whatever is not known within
/// kPromise is computed as a single path. Use one for each event and thread.
class PathBatch {
 public:
  /// The largest bound of a path that is not computed as a single one.
  static constexpr double kPromise = 1e-9;

  /// @param pmts  must outlive this
  PathBatch(const ConcentricMedia& media, const PerMedium& groupIndices,
            const TVector3& eventPos, const PMTArray& pmts)
      : event_(media, eventPos, pmts), groupIndices_(groupIndices) {}

  /// Use this kernel, which must be available. The default is the widest.
  void UseKernel(eKernel kernel) { event_.UseKernel(kernel); }

  void Calc(const LightPathRow& row);

 private:
  void FillUnusedPoints() const;
  void CalcGroup(const PMTArray::Group& group);
  void CalcRange(const RayRange& range, const EventRays::Part& part);
  void Write(const RayRange& range, const EventRays::Block& block);
  void CalcSingle(std::size_t begin, std::size_t end);
  void CalcSingle(std::uint32_t pmt);
  void WriteSingle(std::uint32_t pmt, const LightPath& path);

  EventRays event_;
  PerMedium groupIndices_;

  LightPathRow row_;
  EventRays::Sorted sorted_;  // PMTs of the current group
  RayBlock rays_;
};

}  // namespace ZARN::DU
