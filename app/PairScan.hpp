#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/OrderedWork.hpp"
#include "app/PositionReader.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"

namespace ZARN::App {

/// The verdict on one path from an event to a PMT.
struct PathVerdict {
  /// kUninitialised where there is no path.
  DU::eLightPathType type = DU::kUninitialised;
  DU::eShadowingComponent by = DU::eShadowingComponent::kNone;

  bool HasPath() const { return type != DU::kUninitialised; }
  bool IsReflected() const { return type == DU::kWaterReflection; }
};

/// Every event of a list with every PMT of another: the pairs in the order of
/// the events, and for each event of the PMTs.
struct Pairs {
  const std::vector<NamedPosition>& events;
  const std::vector<NamedPosition>& pmts;

  std::size_t Count() const { return events.size() * pmts.size(); }
  const NamedPosition& Event(std::size_t pair) const {
    return events[pair / pmts.size()];
  }
  const NamedPosition& PMT(std::size_t pair) const {
    return pmts[pair % pmts.size()];
  }
};

/// Judges the paths of pairs, on several threads.
class PairScan {
 public:
  struct Settings {
    std::size_t threads = 1;
    bool withReflections = false;
    bool withVerdictText = false;
    bool withPathText = false;
  };

  static constexpr const char* kVerdictHeader = "event,pmt,type,shadowed,by\n";
  /// What stands in the column by where there is no path.
  static constexpr const char* kNoPath = "no path";
  static std::string PathHeader();

  /// What was found for some pairs in a row.
  struct Chunk {
    /// A direct verdict for each pair, with a reflected one directly after it
    /// where there is one.
    std::vector<PathVerdict> verdicts;
    std::string verdictText;  ///< rows of CSV, where they are wanted
    std::string pathText;
  };

  /// @param shadowing  must outlive the scan; its run has begun
  /// @param lightPath  as each thread begins with it; its run has begun
  PairScan(const DU::ShadowingCalculator& shadowing,
           const DU::LightPathCalculator& lightPath, const Settings& settings);

  /// Judge the pairs from @p begin up to @p end.
  ///
  /// @return chunks in the order of the pairs; valid until the next call
  /// @throws Interrupted if a signal came
  const std::vector<Chunk>& Judge(const Pairs& pairs, std::size_t begin,
                                  std::size_t end);

 private:
  /// What one thread does at a time.
  struct Part {
    const Pairs* pairs;
    std::size_t begin;
    std::size_t end;
    Chunk* chunk;
  };

  void JudgePart(const Part& part, DU::LightPathCalculator& lightPath) const;
  void Take(const Pairs& pairs, std::size_t pair,
            const DU::LightPathCalculator& lightPath, Chunk& chunk) const;

  const DU::ShadowingCalculator& shadowing_;
  Settings settings_;
  std::vector<DU::LightPathCalculator> lightPaths_;  // one for each thread
  std::vector<Chunk> chunks_;
  OrderedWork<Part> work_;
};

}  // namespace ZARN::App
