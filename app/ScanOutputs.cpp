#include "app/ScanOutputs.hpp"

#include <algorithm>

#include "app/Signals.hpp"
#include "io/FileNames.hpp"
#include "io/IntegerName.hpp"
#include "io/LightPathText.hpp"

namespace ZARN::App {
namespace {

bool AreIntegers(const std::vector<IO::NamedPosition>& items) {
  return std::all_of(items.begin(), items.end(), [](const auto& item) {
    return IO::IntegerOf(item.name).has_value();
  });
}

void WriteCounts(IO::CountsFile& file, const IO::NamedPosition& name,
                 const Scan::VerdictCounts& counts,
                 const Scan::SmearedMean& smeared) {
  file.Write(name, counts.Paths(), counts.Shadowed(), counts.MostFrequent(),
             smeared.Value());
}

IO::JudgedPair PairOf(const TVector3& event, const TVector3& pmt,
                      DU::eVerdict verdict,
                      const DU::LightPathCalculator& lightPath,
                      const Scan::SmearedCount& smeared,
                      const IO::PathDetails& details) {
  return {event,   pmt, verdict, lightPath, smeared.paths, smeared.shadowed,
          &details};
}

}  // namespace

ScanOutputs::ScanOutputs(const ScanOptions& options,
                         const DU::ShadowingCalculator& shadowing,
                         const DU::LightPathCalculator& lightPath,
                         const std::vector<IO::NamedPosition>& pmts)
    : pmts_(pmts),
      slots_(Scan::RowScan::SlotsFor(options.run.threads)),
      fields_{false, options.AllColumns()},
      details_(shadowing, fields_.columns) {
  for (Slot& slot : slots_) slot.lightPath = lightPath;
  IO::Origin origin = OriginOf(options.run, shadowing);
  origin.wavelength = options.wavelength;
  origin.smearing = options.Smearing();
  origin.tolerances = options.tolerances;
  if (options.WritesTable()) {
    table_.emplace(options.verdicts.output, origin);
    sidecar_.emplace(options.verdicts.output, origin);
  } else if (options.WritesVerdicts() && options.verdicts.WritesNTuple()) {
    ntuple_.emplace(*options.verdicts.output, origin, pmts);
  } else if (options.WritesVerdicts()) {
    text_.emplace(pmts, fields_.columns);
    verdicts_.emplace(options.verdicts.output);
    sidecar_.emplace(options.verdicts.output, origin);
    verdicts_->Write(text_->Header());
  }
  if (options.paths.has_value() && IO::IsRootFileName(*options.paths)) {
    pathNTuple_.emplace(*options.paths, origin);
  } else if (options.paths.has_value()) {
    paths_.emplace(options.paths);
    paths_->Write("event,pmt," + IO::LightPathHeader() + "\n");
  }
  const auto kind = options.sigma.has_value()     ? IO::eCounts::kSmeared
                    : !options.tolerances.empty() ? IO::eCounts::kAtTolerances
                                                  : IO::eCounts::kPlain;
  if (!options.tolerances.empty()) {
    atTolerances_.emplace(shadowing, lightPath, IO::PositionsOf(pmts),
                          Scan::ToleranceCounts::Settings{
                              options.tolerances, slots_.size(),
                              options.perPMT.has_value(), ThrowIfInterrupted});
  }
  if (options.perPMT.has_value()) {
    perPMT_.emplace(options.perPMT, "pmt", origin, kind);
    if (options.sigma.has_value()) smearedOfPMT_.resize(pmts.size());
    perPMT_->Begin(AreIntegers(pmts));
  }
  if (options.perEvent.has_value()) {
    perEvent_.emplace(options.perEvent, "event", origin, kind);
  }
  needsPaths_ = options.paths.has_value() ||
                std::any_of(fields_.columns.begin(), fields_.columns.end(),
                            [](const auto* column) {
                              return column->need != IO::eNeed::kNothing;
                            });
}

std::size_t ScanOutputs::PairsPerBlock() const {
  // The text of a light path is ten times as long as that of a verdict.
  if (paths_.has_value()) return 1UL << 10U;
  // A block is a cluster of the RNTuple, and small clusters compress badly.
  if (ntuple_.has_value()) return 1UL << 16U;
  // These take so long that each thread should get some of few pairs.
  if (atTolerances_.has_value() || details_.IsNeeded()) return 1UL << 10U;
  return 1UL << 13U;
}

void ScanOutputs::Begin(const std::vector<IO::NamedPosition>& firstEvents) {
  const bool hasNTuple = ntuple_.has_value() || pathNTuple_.has_value() ||
                         (perEvent_.has_value() && perEvent_->IsNTuple());
  fields_.hasIntegerEvents = hasNTuple && AreIntegers(firstEvents);
  if (ntuple_.has_value()) ntuple_->Begin(fields_, slots_.size());
  if (pathNTuple_.has_value()) {
    pathNTuple_->Begin({fields_.hasIntegerEvents, AreIntegers(pmts_)},
                       slots_.size());
  }
  if (perEvent_.has_value()) perEvent_->Begin(fields_.hasIntegerEvents);
}

std::size_t ScanOutputs::LongestKeptRow() const {
  const bool hasPaths = paths_.has_value() || pathNTuple_.has_value();
  return hasPaths ? 1UL << 13U : 1UL << 15U;
}

bool ScanOutputs::MakesRows() const {
  return verdicts_.has_value() || ntuple_.has_value() || paths_.has_value() ||
         pathNTuple_.has_value();
}

void ScanOutputs::MakeRows(const Scan::RowBlock& block) {
  if (atTolerances_.has_value()) atTolerances_->Judge(block);
  if (!MakesRows() || !IsKept(block.pmts)) return;
  Slot& slot = slots_[block.slot];
  slot.verdicts.Clear();
  slot.paths.clear();
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    AddRows(block, event, 0, block.pmts);
  }
  FlushRows(block.slot);
}

void ScanOutputs::AddRows(const Scan::RowBlock& block, std::size_t event,
                          std::size_t begin, std::size_t end) {
  Slot& slot = slots_[block.slot];
  const TVector3& position = block.events[event];
  const DU::eVerdict* const direct = block.Direct(event);
  const DU::eVerdict* const reflected = block.Reflected(event);
  if (text_.has_value()) {
    slot.rowBegin = IO::VerdictText::BeginOf(slot.events[event]);
  }
  if (ntuple_.has_value()) {
    ntuple_->BlockAt(block.slot).SetEvent(slot.events[event]);
  }
  for (std::size_t pmt = begin; pmt < end; ++pmt) {
    const TVector3& pmtPosition = pmts_[pmt].position;
    const bool hasPath = DU::HasPath(direct[pmt]);
    if (needsPaths_ && hasPath) {
      slot.lightPath.CalcByPosition(position, pmtPosition);
      FindDetails(slot, direct[pmt]);
    }
    AddRow(block.slot, event, pmt, block.DirectType(event, pmt),
           PairOf(position, pmtPosition, direct[pmt], slot.lightPath,
                  block.Smeared(event, pmt), slot.details));
    if (reflected == nullptr || !DU::HasPath(reflected[pmt])) continue;
    if (needsPaths_) {
      slot.lightPath.CalcReflectionByPosition(position, pmtPosition);
      FindDetails(slot, reflected[pmt]);
    }
    AddRow(block.slot, event, pmt, DU::kWaterReflection,
           PairOf(position, pmtPosition, reflected[pmt], slot.lightPath,
                  block.SmearedReflected(event, pmt), slot.details));
  }
}

void ScanOutputs::FindDetails(Slot& slot, DU::eVerdict verdict) const {
  if (!details_.IsNeeded()) return;
  ThrowIfInterrupted();  // the details of a block may take seconds
  details_.Find(slot.lightPath.GetLightPath(), DU::ComponentOf(verdict),
                slot.details);
}

void ScanOutputs::AddRow(std::size_t slotNumber, std::size_t event,
                         std::size_t pmt, DU::eLightPathType type,
                         const IO::JudgedPair& pair) {
  Slot& slot = slots_[slotNumber];
  if (text_.has_value()) {
    text_->AppendRow(slot.verdicts, slot.rowBegin, pmt, type, pair);
  }
  if (ntuple_.has_value()) ntuple_->BlockAt(slotNumber).Fill(pmt, type, pair);
  if (!DU::HasPath(pair.verdict)) return;
  if (pathNTuple_.has_value()) {
    pathNTuple_->BlockAt(slotNumber)
        .Fill(slot.events[event].name, pmts_[pmt].name,
              pair.lightPath.GetLightPath());
  }
  if (!paths_.has_value()) return;
  slot.paths += slot.events[event].cell;
  slot.paths += ',';
  slot.paths += pmts_[pmt].cell;
  slot.paths += ',';
  IO::AppendLightPath(slot.paths, pair.lightPath.GetLightPath());
  slot.paths += '\n';
}

void ScanOutputs::Write(const Scan::RowBlock& block) {
  if (MakesRows()) {
    if (IsKept(block.pmts)) {
      WriteRows(block.slot);
    } else {
      MakeAndWriteRows(block);
    }
  }
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    const Scan::SmearedMean smeared = AddSmeared(block, event);
    if (!perEvent_.has_value()) continue;
    const IO::NamedPosition& name = slots_[block.slot].events[event];
    if (atTolerances_.has_value()) {
      WriteCountsAtTolerances(*perEvent_, name,
                              atTolerances_->OfEvent(block, event));
    } else {
      WriteCounts(*perEvent_, name, block.counts[event], smeared);
    }
  }
}

/// The mean over the rows of an event. Those of the PMTs get what belongs to
/// them, in the order of the events: the sums would else depend on the threads.
Scan::SmearedMean ScanOutputs::AddSmeared(const Scan::RowBlock& block,
                                          std::size_t event) {
  Scan::SmearedMean mean;
  if (block.smeared.empty()) return mean;
  const DU::eVerdict* const reflected = block.Reflected(event);
  const auto add = [&](std::size_t pmt, Scan::SmearedCount count) {
    mean.Add(count);
    if (perPMT_.has_value()) smearedOfPMT_[pmt].Add(count);
  };
  for (std::size_t pmt = 0; pmt < block.pmts; ++pmt) {
    add(pmt, block.Smeared(event, pmt));
    if (reflected == nullptr || !DU::HasPath(reflected[pmt])) continue;
    add(pmt, block.SmearedReflected(event, pmt));
  }
  return mean;
}

void ScanOutputs::FlushRows(std::size_t slotNumber) {
  if (ntuple_.has_value()) ntuple_->BlockAt(slotNumber).Flush();
  if (pathNTuple_.has_value()) pathNTuple_->BlockAt(slotNumber).Flush();
}

void ScanOutputs::WriteRows(std::size_t slotNumber) {
  const Slot& slot = slots_[slotNumber];
  if (verdicts_.has_value()) verdicts_->Write(slot.verdicts.Text());
  if (paths_.has_value()) paths_->Write(slot.paths);
  if (ntuple_.has_value()) ntuple_->BlockAt(slotNumber).Commit();
  if (pathNTuple_.has_value()) pathNTuple_->BlockAt(slotNumber).Commit();
}

void ScanOutputs::MakeAndWriteRows(const Scan::RowBlock& block) {
  Slot& slot = slots_[block.slot];
  const std::size_t most = LongestKeptRow();
  for (std::size_t event = 0; event < block.events.size(); ++event) {
    for (std::size_t begin = 0; begin < block.pmts; begin += most) {
      ThrowIfInterrupted();
      slot.verdicts.Clear();
      slot.paths.clear();
      AddRows(block, event, begin, std::min(begin + most, block.pmts));
      FlushRows(block.slot);
      WriteRows(block.slot);
    }
  }
}

void ScanOutputs::WriteCountsAtTolerances(IO::CountsFile& file,
                                          const IO::NamedPosition& name,
                                          const Scan::VerdictCounts* counts) {
  for (const double tolerance : atTolerances_->Tolerances()) {
    file.Write(name, counts->Paths(), counts->Shadowed(),
               counts->MostFrequent(), std::nullopt, tolerance);
    ++counts;
  }
}

void ScanOutputs::WriteTable() {
  const std::vector<double>& tolerances = atTolerances_->Tolerances();
  for (std::size_t i = 0; i < tolerances.size(); ++i) {
    const Scan::VerdictCounts& counts = atTolerances_->OfAll()[i];
    const std::uint64_t paths = counts.Paths();
    table_->Write(tolerances[i], "any", paths, counts.Shadowed());
    for (const auto component : DU::kShadowingComponents) {
      table_->Write(tolerances[i], DU::NameOf(component), paths,
                    counts.Of(component));
    }
  }
}

void ScanOutputs::WriteTotals(const std::vector<Scan::VerdictCounts>& perPMT) {
  if (table_.has_value()) WriteTable();
  if (!perPMT_.has_value()) return;
  for (std::size_t pmt = 0; pmt < pmts_.size(); ++pmt) {
    if (atTolerances_.has_value()) {
      WriteCountsAtTolerances(*perPMT_, pmts_[pmt], atTolerances_->OfPMT(pmt));
      continue;
    }
    WriteCounts(
        *perPMT_, pmts_[pmt], perPMT[pmt],
        smearedOfPMT_.empty() ? Scan::SmearedMean() : smearedOfPMT_[pmt]);
  }
}

template <class Work>
void ScanOutputs::ForEachFile(const Work& work) {
  if (ntuple_.has_value()) work(*ntuple_);
  if (pathNTuple_.has_value()) work(*pathNTuple_);
  if (verdicts_.has_value()) work(*verdicts_);
  if (paths_.has_value()) work(*paths_);
  if (perPMT_.has_value()) work(*perPMT_);
  if (perEvent_.has_value()) work(*perEvent_);
  if (table_.has_value()) work(*table_);
  if (sidecar_.has_value()) work(*sidecar_);
}

void ScanOutputs::Commit() {
  ForEachFile([](auto& file) { file.Finish(); });
  ThrowIfInterrupted();
  ForEachFile([](auto& file) { file.Commit(); });
}

}  // namespace ZARN::App
