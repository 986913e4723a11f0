#include "app/ScanOutputs.hpp"

#include "app/Signals.hpp"
#include "io/LightPathText.hpp"
#include "io/VerdictText.hpp"

namespace ZARN::App {
namespace {

void WriteCounts(std::optional<IO::CountsFile>& file,
                 const IO::NamedPosition& name,
                 const Scan::VerdictCounts& counts) {
  if (!file.has_value()) return;
  file->Write(name.cell, counts.Paths(), counts.Shadowed(),
              counts.MostFrequent());
}

}  // namespace

ScanOutputs::ScanOutputs(const ScanOptions& options,
                         const DU::ShadowingCalculator& shadowing,
                         const std::vector<IO::NamedPosition>& pmts)
    : pmts_(pmts) {
  if (options.WritesNTuple()) {
    ntuple_.emplace(*options.output,
                    IO::VerdictNTuple::Origin{
                        "zarn-shadow", ZARN_VERSION, options.run.run,
                        shadowing.GetAVHDRopeTolerance(), options.wavelength});
  } else {
    verdicts_.emplace(options.output);
    verdicts_->Write("event,pmt,type,shadowed,by\n");
  }
  if (options.paths.has_value()) {
    paths_.emplace(options.paths);
    paths_->Write("event,pmt," + IO::LightPathHeader() + "\n");
  }
  if (options.perPMT.has_value()) perPMT_.emplace(options.perPMT, "pmt");
  if (options.perEvent.has_value()) {
    perEvent_.emplace(options.perEvent, "event");
  }
}

void ScanOutputs::MakeRows(std::size_t number, const Scan::PairChunk& chunk) {
  Rows& rows = rows_[number];
  rows.verdicts.clear();
  rows.paths.clear();
  auto path = chunk.paths.begin();
  for (const Scan::PairVerdict& verdict : chunk.verdicts) {
    if (verdicts_.has_value()) {
      AppendNames(rows.verdicts, verdict.pair);
      IO::AppendPathVerdict(rows.verdicts, verdict.type, verdict.by);
      rows.verdicts += '\n';
    }
    if (paths_.has_value() && verdict.HasPath()) {
      AppendNames(rows.paths, verdict.pair);
      IO::AppendLightPath(rows.paths, *path++);
      rows.paths += '\n';
    }
  }
}

void ScanOutputs::AppendNames(std::string& row, std::size_t pair) const {
  row += EventOf(pair).cell;
  row += ',';
  row += PMTOf(pair).cell;
  row += ',';
}

void ScanOutputs::Write(const std::vector<Scan::PairChunk>& slice) {
  for (std::size_t number = 0; number < slice.size(); ++number) {
    if (verdicts_.has_value()) verdicts_->Write(rows_[number].verdicts);
    if (paths_.has_value()) paths_->Write(rows_[number].paths);
    if (!ntuple_.has_value()) continue;
    for (const Scan::PairVerdict& verdict : slice[number].verdicts) {
      ntuple_->Fill(EventOf(verdict.pair).name, PMTOf(verdict.pair).name,
                    verdict.type, verdict.by);
    }
  }
}

void ScanOutputs::WriteEvent(std::size_t event,
                             const Scan::VerdictCounts& counts) {
  WriteCounts(perEvent_, (*events_)[event], counts);
}

void ScanOutputs::WritePMT(std::size_t pmt, const Scan::VerdictCounts& counts) {
  WriteCounts(perPMT_, pmts_[pmt], counts);
}

template <class Work>
void ScanOutputs::ForEachFile(const Work& work) {
  if (ntuple_.has_value()) work(*ntuple_);
  if (verdicts_.has_value()) work(*verdicts_);
  if (paths_.has_value()) work(*paths_);
  if (perPMT_.has_value()) work(*perPMT_);
  if (perEvent_.has_value()) work(*perEvent_);
}

void ScanOutputs::Commit() {
  ForEachFile([](auto& file) { file.Finish(); });
  ThrowIfInterrupted();
  ForEachFile([](auto& file) { file.Commit(); });
}

}  // namespace ZARN::App
