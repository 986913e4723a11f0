#include "display/MapScan.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <utility>

#include "lightpath/PMTArray.hpp"
#include "scan/OrderedWork.hpp"
#include "scan/RowScan.hpp"
#include "scan/ToleranceCounts.hpp"

namespace ZARN::Display {
namespace {

/// Enough targets that a table of the event's rays pays, few enough that they
/// are quickly prepared and all threads get some.
constexpr std::size_t kTargetsInPart = 4096;
/// Pairs for which a thread comes back.
constexpr std::size_t kPairsInItem = 1UL << 14U;

/// Clear, the components, and no path.
constexpr std::size_t kKinds = DU::kNumberOfComponents + 2;

/// Neighbouring targets, prepared by the first thread that needs them.
class Part {
 public:
  Part(const MapPoints& targets, std::size_t begin)
      : targets_(targets),
        begin_(begin),
        end_(std::min(begin + kTargetsInPart, targets.count)) {}

  std::size_t Begin() const { return begin_; }
  std::size_t Count() const { return end_ - begin_; }

  const DU::PMTArray& Array() {
    std::call_once(isMade_, [this] {
      array_ = DU::PMTArray(targets_.make(begin_, end_));
    });
    return array_;
  }

 private:
  const MapPoints& targets_;
  std::size_t begin_;
  std::size_t end_;
  std::once_flag isMade_;
  DU::PMTArray array_;
};

/// How often a verdict with the first tables became another with the second.
using Changes = std::array<std::array<std::uint64_t, kKinds>, kKinds>;

/// Some events and the targets of a part.
struct Item {
  std::shared_ptr<Part> part;
  Scan::RowBlock rows;
  std::vector<DU::eVerdict> before;
  MapCounts counts;
  Changes changes = {};
};

void AddRow(MapCounts& counts, const DU::eVerdict* row, std::size_t length) {
  Scan::VerdictCounts paths;
  paths.AddRow(row, length);
  counts.paths += paths;
  if (paths.Paths() == length) return;
  std::for_each(row, row + length, [&](DU::eVerdict verdict) {
    if (!DU::HasPath(verdict)) counts.Add(verdict);
  });
}

/// The verdict that stands for a kind of change: all reasons for no path are
/// one.
std::size_t KindOf(DU::eVerdict verdict) {
  return static_cast<std::size_t>(
      std::min(verdict, DU::eVerdict::kTotalReflection));
}

std::vector<MapChange> Sorted(const Changes& changes) {
  std::vector<MapChange> sorted;
  for (std::size_t before = 0; before < kKinds; ++before) {
    for (std::size_t after = 0; after < kKinds; ++after) {
      if (before == after || changes[before][after] == 0) continue;
      sorted.push_back({static_cast<DU::eVerdict>(before),
                        static_cast<DU::eVerdict>(after),
                        changes[before][after]});
    }
  }
  std::stable_sort(
      sorted.begin(), sorted.end(),
      [](const MapChange& a, const MapChange& b) { return a.count > b.count; });
  return sorted;
}

class Scanner {
 public:
  Scanner(const MapTables& tables, const std::vector<TVector3>& events,
          const MapPoints& targets, const MapScanSettings& settings)
      : tables_(tables),
        events_(events),
        targets_(targets),
        settings_(settings),
        slots_(Scan::RowScan::SlotsFor(settings.threads)) {
    if (!settings_.tolerances.empty()) {
      atTolerances_.emplace(
          *tables_.shadowing, *tables_.lightPath,
          targets_.make(0, targets_.count),
          Scan::ToleranceCounts::Settings{settings_.tolerances, slots_, false,
                                          settings_.checkForStop});
    }
    if (events_.size() > 1) {
      found_.paths.resize(targets_.count);
      found_.shadowed.resize(targets_.count);
    } else {
      found_.verdicts.resize(targets_.count);
      if (settings_.before.has_value()) found_.before.resize(targets_.count);
    }
  }

  MapVerdicts Run() {
    // Last, so that no thread works any more when the rest goes.
    Scan::OrderedWork<Item> work(
        settings_.threads,
        [this](Item& item, std::size_t /*worker*/) { Judge(item); });
    std::size_t begun = 0;
    for (std::size_t begin = 0; begin < targets_.count;
         begin += kTargetsInPart) {
      const auto part = std::make_shared<Part>(targets_, begin);
      const std::size_t most =
          std::max<std::size_t>(1, kPairsInItem / part->Count());
      for (std::size_t event = 0; event < events_.size(); event += most) {
        if (work.Size() == slots_) Take(work.Pop());
        Item item;
        item.part = part;
        item.rows.slot = begun++ % slots_;
        item.rows.firstEvent = event;
        item.rows.events.assign(
            events_.begin() + static_cast<std::ptrdiff_t>(event),
            events_.begin() + static_cast<std::ptrdiff_t>(
                                  std::min(event + most, events_.size())));
        work.Push(std::move(item));
      }
    }
    while (work.Size() > 0) Take(work.Pop());
    found_.changes = Sorted(changes_);
    if (atTolerances_.has_value()) found_.atTolerances = atTolerances_->OfAll();
    return std::move(found_);
  }

 private:
  void Judge(Item& item) {
    Scan::RowBlock& rows = item.rows;
    rows.firstPMT = item.part->Begin();
    rows.pmts = item.part->Count();
    JudgeRows(tables_, item, rows.direct);
    for (std::size_t event = 0; event < rows.events.size(); ++event) {
      AddRow(item.counts, rows.Direct(event), rows.pmts);
    }
    if (settings_.before.has_value()) {
      JudgeRows(*settings_.before, item, item.before);
      for (std::size_t i = 0; i < item.before.size(); ++i) {
        ++item.changes[KindOf(item.before[i])][KindOf(rows.direct[i])];
      }
    }
    if (atTolerances_.has_value()) atTolerances_->Judge(rows);
  }

  void JudgeRows(const MapTables& tables, Item& item,
                 std::vector<DU::eVerdict>& verdicts) const {
    const DU::PMTArray& targets = item.part->Array();
    verdicts.resize(item.rows.events.size() * targets.Count());
    DU::eVerdict* row = verdicts.data();
    for (const TVector3& event : item.rows.events) {
      if (settings_.checkForStop != nullptr) settings_.checkForStop();
      tables.shadowing->FindVerdicts(*tables.lightPath, event, targets, {row});
      row += targets.Count();
    }
  }

  /// Add what was found, in order.
  void Take(const Item& item) {
    const Scan::RowBlock& rows = item.rows;
    const auto begin = static_cast<std::ptrdiff_t>(rows.firstPMT);
    found_.counts.paths += item.counts.paths;
    for (std::size_t i = 0; i < item.counts.withoutPath.size(); ++i) {
      found_.counts.withoutPath[i] += item.counts.withoutPath[i];
    }
    if (events_.size() > 1) {
      for (std::size_t event = 0; event < rows.events.size(); ++event) {
        for (std::size_t i = 0; i < rows.pmts; ++i) {
          const DU::eVerdict verdict = rows.Direct(event)[i];
          found_.paths[rows.firstPMT + i] += DU::HasPath(verdict) ? 1U : 0U;
          found_.shadowed[rows.firstPMT + i] +=
              DU::IsShadowed(verdict) ? 1U : 0U;
        }
      }
    } else {
      std::copy(rows.direct.begin(), rows.direct.end(),
                found_.verdicts.begin() + begin);
      std::copy(item.before.begin(), item.before.end(),
                found_.before.begin() + begin);
    }
    for (std::size_t before = 0; before < kKinds; ++before) {
      for (std::size_t after = 0; after < kKinds; ++after) {
        changes_[before][after] += item.changes[before][after];
      }
    }
    pairs_ += rows.events.size() * rows.pmts;
    if (settings_.onProgress != nullptr) settings_.onProgress(pairs_);
  }

  const MapTables& tables_;
  const std::vector<TVector3>& events_;
  const MapPoints& targets_;
  const MapScanSettings& settings_;
  std::size_t slots_;
  std::optional<Scan::ToleranceCounts> atTolerances_;
  MapVerdicts found_;
  Changes changes_ = {};
  std::uint64_t pairs_ = 0;
};

}  // namespace

MapVerdicts ScanMap(const MapTables& tables,
                    const std::vector<TVector3>& events,
                    const MapPoints& targets, const MapScanSettings& settings) {
  return Scanner(tables, events, targets, settings).Run();
}

}  // namespace ZARN::Display
