#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/ScanOptions.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/CountsFile.hpp"
#include "io/LightPathNTuple.hpp"
#include "io/OutputFile.hpp"
#include "io/PathDetails.hpp"
#include "io/PieceText.hpp"
#include "io/PositionReader.hpp"
#include "io/Sidecar.hpp"
#include "io/ToleranceTable.hpp"
#include "io/VerdictNTuple.hpp"
#include "io/VerdictText.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/RowScan.hpp"
#include "scan/Smearing.hpp"
#include "scan/ToleranceCounts.hpp"
#include "scan/VerdictCounts.hpp"

namespace ZARN::App {

/// All output files of a scan, written block by block. Only what an output
/// needs is computed and formatted.
class ScanOutputs {
 public:
  /// @param lightPath  BeginOfRun was called
  /// @param pmts       must outlive this
  /// @throws as IO::OutputFile
  ScanOutputs(const ScanOptions& options,
              const DU::ShadowingCalculator& shadowing,
              const DU::LightPathCalculator& lightPath,
              const std::vector<IO::NamedPosition>& pmts);

  /// The largest number of pairs in a block, unless one row is longer: few
  /// enough that the rows of the blocks in work fit into memory.
  std::size_t PairsPerBlock() const;

  /// The events of a block, to be filled in before MakeRows.
  std::vector<IO::NamedPosition>& EventsOf(std::size_t slot) {
    return slots_[slot].events;
  }

  /// Define the fields of the RNTuples, if any are written, by the first
  /// events.
  void Begin(const std::vector<IO::NamedPosition>& firstEvents);
  /// Whether all names of events must be integers, after Begin.
  bool RequiresIntegers() const { return fields_.hasIntegerEvents; }

  /// Make the rows of a block. Thread-safe for different slots.
  void MakeRows(const Scan::RowBlock& block);

  /// Write a block, after MakeRows.
  void Write(const Scan::RowBlock& block);

  /// Write the counts over all blocks.
  ///
  /// @param perPMT  those at one tolerance
  void WriteTotals(const std::vector<Scan::VerdictCounts>& perPMT);

  /// Finish all files, then move all to their final names.
  void Commit();

 private:
  /// What belongs to one of the blocks in work.
  struct Slot {
    DU::LightPathCalculator lightPath;
    std::vector<IO::NamedPosition> events;
    IO::PieceText::Piece rowBegin;  // of the current event
    IO::PathDetails details;        // of the current path
    IO::PieceText verdicts;
    std::string paths;
  };

  /// The text of a longer row is made piece by piece when it is written: kept
  /// in memory it would need 50 bytes for each PMT, or 500 with light paths, in
  /// every block in work.
  std::size_t LongestKeptRow() const;
  bool IsKept(std::size_t pmts) const { return pmts <= LongestKeptRow(); }
  bool MakesRows() const;
  /// Add the rows of some PMTs to what the slot holds.
  void AddRows(const Scan::RowBlock& block, std::size_t event,
               std::size_t begin, std::size_t end);
  void FindDetails(Slot& slot, DU::eVerdict verdict) const;
  void AddRow(std::size_t slotNumber, std::size_t event, std::size_t pmt,
              DU::eLightPathType type, const IO::JudgedPair& pair);
  void FlushRows(std::size_t slotNumber);
  void WriteRows(std::size_t slotNumber);
  void MakeAndWriteRows(const Scan::RowBlock& block);
  Scan::SmearedMean AddSmeared(const Scan::RowBlock& block, std::size_t event);
  /// A row, or one for each tolerance.
  void WriteCountsAtTolerances(IO::CountsFile& file,
                               const IO::NamedPosition& name,
                               const Scan::VerdictCounts* counts);
  void WriteTable();
  template <class Work>
  void ForEachFile(const Work& work);

  const std::vector<IO::NamedPosition>& pmts_;
  std::vector<Slot> slots_;
  IO::VerdictNTuple::Fields fields_;
  IO::DetailFinder details_;
  bool needsPaths_ = false;  // whether light paths must be computed
  std::optional<IO::VerdictText> text_;
  std::optional<IO::OutputFile> verdicts_;
  std::optional<IO::Sidecar> sidecar_;
  std::optional<IO::VerdictNTuple> ntuple_;
  std::optional<IO::OutputFile> paths_;
  std::optional<IO::LightPathNTuple> pathNTuple_;
  std::optional<IO::CountsFile> perPMT_;
  std::vector<Scan::SmearedMean> smearedOfPMT_;
  std::optional<IO::CountsFile> perEvent_;
  std::optional<Scan::ToleranceCounts> atTolerances_;
  std::optional<IO::ToleranceTable> table_;
};

}  // namespace ZARN::App
