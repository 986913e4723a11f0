#include "scan/RowScan.hpp"

#include <algorithm>
#include <utility>

namespace ZARN::Scan {
namespace {

/// Events in memory.
class EventList : public RowScan::Source {
 public:
  explicit EventList(const std::vector<TVector3>& events) : events_(events) {}

  bool Next(RowBlock& block, std::size_t most) override {
    const auto begin = events_.begin() + static_cast<std::ptrdiff_t>(next_);
    const std::size_t count = std::min(most, events_.size() - next_);
    block.events.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
    next_ += count;
    return count > 0;
  }

 private:
  const std::vector<TVector3>& events_;
  std::size_t next_ = 0;
};

void AddRow(const DU::eVerdict* row, std::size_t length, SmearedCount* counts) {
  for (std::size_t i = 0; i < length; ++i) {
    const int path = DU::HasPath(row[i]) ? 1 : 0;
    const int shadowed = DU::IsShadowed(row[i]) ? 1 : 0;
    counts[i].paths = static_cast<std::uint16_t>(counts[i].paths + path);
    counts[i].shadowed =
        static_cast<std::uint16_t>(counts[i].shadowed + shadowed);
  }
}

}  // namespace

RowScan::RowScan(const DU::ShadowingCalculator& shadowing,
                 const DU::LightPathCalculator& lightPath, DU::PMTArray pmts,
                 Settings settings)
    : shadowing_(shadowing),
      lightPath_(lightPath),
      pmts_(std::move(pmts)),
      settings_(std::move(settings)),
      free_(SlotsFor(settings_.threads)),
      work_(settings_.threads, [this](RowBlock& block, std::size_t worker) {
        if (isStopping_) return;
        Judge(block);
        if (settings_.smearing.has_value()) JudgeSmeared(block, worker);
        Count(block, worker);
        if (settings_.onBlock) settings_.onBlock(block);
      }) {
  if (settings_.withPMTCounts) {
    countsOfWorker_.assign(settings_.threads, PMTCounts(pmts_.Count()));
  }
  if (settings_.smearing.has_value()) rowsOfWorker_.resize(settings_.threads);
}

void RowScan::Run(const std::vector<TVector3>& events, const Sink& sink) {
  EventList list(events);
  Run(list, sink);
}

void RowScan::Run(Source& source, const Sink& sink) {
  if (settings_.withPMTCounts) perPMT_.assign(pmts_.Count(), {});
  try {
    RunBlocks(source, sink);
  } catch (...) {
    Drain();
    throw;
  }
  for (PMTCounts& counts : countsOfWorker_) counts.MoveTo(perPMT_);
}

void RowScan::RunBlocks(Source& source, const Sink& sink) {
  // What is kept of an event besides its rows needs memory, too.
  constexpr std::size_t kPairsForAnEvent = 8;
  const std::size_t most = std::max<std::size_t>(
      1, settings_.pairsPerBlock / (pmts_.Count() + kPairsForAnEvent));
  bool isAtEnd = false;
  std::size_t begun = 0;  // blocks
  std::uint64_t events = 0;
  while (true) {
    if (!isAtEnd && work_.Size() < free_.size()) {
      const std::size_t slot = begun % free_.size();
      RowBlock& block = free_[slot];
      block.slot = slot;
      block.firstEvent = events;
      isAtEnd = !source.Next(block, most);
      if (isAtEnd) continue;
      events += block.events.size();
      ++begun;
      work_.Push(std::move(block));
    } else if (work_.Size() > 0) {
      RowBlock block = work_.Pop();
      sink(block);
      free_[block.slot] = std::move(block);  // keep its buffers
    } else {
      return;
    }
  }
}

/// Wait until no thread works any more, after an exception.
void RowScan::Drain() {
  isStopping_ = true;
  while (work_.Size() > 0) {
    try {
      work_.Pop();
    } catch (...) {  // the first exception is already on its way
    }
  }
  isStopping_ = false;
  for (PMTCounts& counts : countsOfWorker_) counts = PMTCounts(pmts_.Count());
}

void RowScan::Judge(RowBlock& block) {
  block.pmts = pmts_.Count();
  const std::size_t pairs = block.events.size() * block.pmts;
  block.direct.resize(pairs);
  if (settings_.withReflections) block.reflected.resize(pairs);
  if (settings_.withTypes) block.types.resize(pairs);
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    const std::size_t begin = event * block.pmts;
    DU::VerdictRows rows = {block.direct.data() + begin};
    if (settings_.withReflections) {
      rows.reflected = block.reflected.data() + begin;
    }
    if (settings_.withTypes) rows.types = block.types.data() + begin;
    JudgeRows(block.events[event], rows);
  }
}

void RowScan::JudgeRows(const TVector3& event,
                        const DU::VerdictRows& rows) const {
  if (settings_.checkForStop != nullptr) settings_.checkForStop();
  shadowing_.FindVerdicts(lightPath_, event, pmts_, rows);
}

void RowScan::JudgeSmeared(RowBlock& block, std::size_t worker) {
  std::vector<DU::eVerdict>& row = rowsOfWorker_[worker];
  row.resize((settings_.withReflections ? 2 : 1) * block.pmts);
  DU::VerdictRows rows = {row.data()};
  if (settings_.withReflections) rows.reflected = row.data() + block.pmts;
  block.smeared.assign(block.direct.size(), {});
  block.smearedReflected.assign(block.reflected.size(), {});
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    SmearedPositions positions(*settings_.smearing, block.firstEvent + event);
    const std::size_t begin = event * block.pmts;
    for (std::size_t i = 0; i < settings_.smearing->samples; ++i) {
      JudgeRows(positions.Next(block.events[event]), rows);
      AddRow(rows.direct, block.pmts, block.smeared.data() + begin);
      if (rows.reflected == nullptr) continue;
      AddRow(rows.reflected, block.pmts, block.smearedReflected.data() + begin);
    }
  }
}

void RowScan::Count(RowBlock& block, std::size_t worker) {
  block.counts.assign(block.events.size(), {});
  block.withoutPath = 0;
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    VerdictCounts& counts = block.counts[event];
    counts.AddRow(block.Direct(event), block.pmts);
    block.withoutPath += block.pmts - counts.Paths();
    if (settings_.withReflections) {
      counts.AddRow(block.Reflected(event), block.pmts);
    }
    if (!settings_.withPMTCounts) continue;
    CountForPMTs(block.Direct(event), countsOfWorker_[worker]);
    if (settings_.withReflections) {
      CountForPMTs(block.Reflected(event), countsOfWorker_[worker]);
    }
  }
}

void RowScan::CountForPMTs(const DU::eVerdict* row, PMTCounts& counts) {
  counts.Add(row);
  if (!counts.IsFull()) return;
  const std::lock_guard<std::mutex> lock(perPMTGuard_);
  counts.MoveTo(perPMT_);
}

}  // namespace ZARN::Scan
