#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/ScanOptions.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/CountsFile.hpp"
#include "io/OutputFile.hpp"
#include "io/PositionReader.hpp"
#include "io/VerdictNTuple.hpp"
#include "scan/PairScan.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {

/// All output files of a scan, written one slice of pairs at a time.
class ScanOutputs {
 public:
  /// Maximum number of pairs in a slice: after each slice, results are written
  /// and progress is shown.
  static constexpr std::size_t kSliceSize = 1UL << 14U;

  /// @param pmts  must outlive this
  /// @throws as IO::OutputFile
  ScanOutputs(const ScanOptions& options,
              const DU::ShadowingCalculator& shadowing,
              const std::vector<IO::NamedPosition>& pmts);

  /// Set the next batch of events, which must exist until the next call.
  void SetEvents(const std::vector<IO::NamedPosition>& events) {
    events_ = &events;
  }

  /// Make the CSV rows of a chunk. Thread-safe for different chunks of a slice.
  ///
  /// @param number  of the chunk in its slice
  void MakeRows(std::size_t number, const Scan::PairChunk& chunk);

  /// Write a slice, after MakeRows for each of its chunks.
  void Write(const std::vector<Scan::PairChunk>& slice);

  /// Write the counts of an event or a PMT.
  void WriteEvent(std::size_t event, const Scan::VerdictCounts& counts);
  void WritePMT(std::size_t pmt, const Scan::VerdictCounts& counts);

  /// Finish all files, then move all to their final names.
  void Commit();

 private:
  struct Rows {
    std::string verdicts;
    std::string paths;
  };

  void AppendNames(std::string& row, std::size_t pair) const;
  const IO::NamedPosition& EventOf(std::size_t pair) const {
    return (*events_)[pair / pmts_.size()];
  }
  const IO::NamedPosition& PMTOf(std::size_t pair) const {
    return pmts_[pair % pmts_.size()];
  }
  template <class Work>
  void ForEachFile(const Work& work);

  const std::vector<IO::NamedPosition>& pmts_;
  const std::vector<IO::NamedPosition>* events_ = nullptr;
  std::array<Rows, kSliceSize / Scan::PairScan::kChunkSize> rows_;
  std::optional<IO::VerdictNTuple> ntuple_;
  std::optional<IO::OutputFile> verdicts_;
  std::optional<IO::OutputFile> paths_;
  std::optional<IO::CountsFile> perPMT_;
  std::optional<IO::CountsFile> perEvent_;
};

}  // namespace ZARN::App
