#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "TVector3.h"
#include "du/fast/BatchVerdict.hpp"
#include "du/fast/LazyLayers.hpp"
#include "lightpath/ConcentricMedia.hpp"
#include "lightpath/EventRays.hpp"
#include "lightpath/PMTArray.hpp"

namespace ZARN::DU {

/// Where an EventBatch writes: one value for each PMT.
struct BatchRow {
  BatchVerdict* verdicts;
  BatchVerdict noPath;  ///< the verdict if there is no path
  std::uint8_t* types;  ///< path types of verdicts that are not open; may be
                        ///< null
};

/// Verdicts on the light from one event to many PMTs, without computing most of
/// its paths.
///
/// 1. A RayTable of the event gives the crossing points and the directions of
///    its rays, each with a bound on its error.
/// 2. ShadowingBatch judges them. Its bands cover the bound.
/// 3. Where it leaves only the map's cell open, ShadowingFilter::FindAtCrossing
///    asks the cell's items.
/// 4. What is open then is traced again, to the last digits, and judged by
///    ShadowingFilter::FindBounded.
/// 5. The rest stays open: kOpenVerdict.
///
/// Use one for each event and thread.
class EventBatch {
 public:
  /// @param layers, pmts  must outlive this
  EventBatch(const PreparedLayers& layers, const ConcentricMedia& media,
             const TVector3& eventPos, const PMTArray& pmts)
      : layers_(layers), event_(media, eventPos, pmts) {}

  /// Use this kernel, which must be available. The default is the widest.
  void UseKernel(eKernel kernel) { event_.UseKernel(kernel); }

  /// Judge the light of CalcByPosition.
  void JudgeDirect(const BatchRow& row);
  /// Judge the light of CalcReflectionByPosition.
  void JudgeReflected(const BatchRow& row);

 private:
  using Block = EventRays::Block;
  using BlockVerdicts = std::array<BatchVerdict, kRayBlock>;

  void Judge(eLight light, const BatchRow& row);
  void JudgeGroup(eLight light, const PMTArray::Group& group);
  void JudgeThrough(const RayRange& range, const EventRays::Part& part);
  void JudgeBlock(const RayRange& range, const Block& block);
  void JudgeOpen(const RayRange& range, const CrossingBlock& crossings,
                 const Block& block, std::size_t i);
  void JudgeAgain(const RayRange& range, const Block& block);
  void JudgeStraight(const Block& block);
  void JudgeStraightAgain(std::uint32_t pmt);
  void Trace(const RayRange& range, eSteps steps, const Block& block);
  void SetVerdicts(const Block& block, const BlockVerdicts& verdicts,
                   eLightPathType type) const;
  bool IsAt(std::uint32_t pmt) const;
  void Set(std::uint32_t pmt, BatchVerdict verdict, eLightPathType type) const;

  const PreparedLayers& layers_;
  EventRays event_;

  BatchRow row_ = {};
  eSteps steps_ = eSteps::kOne;  // of the current group
  bool isAmongPMTs_ = false;     // whether one of its PMTs may be at the event
  EventRays::Sorted sorted_;     // PMTs of the current group
  EventRays::Indexes open_;      // to be traced again
  RayBlock rays_;
};

}  // namespace ZARN::DU
