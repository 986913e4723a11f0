#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/OutputFile.hpp"

namespace ZARN::IO {

/// A CSV file with one row of counts per PMT or per event. Columns: the name,
/// paths, shadowed, fraction (empty if there are no paths) and by, the
/// component that shadows most paths; and smeared_fraction for smeared counts
/// (empty if there is none).
class CountsFile {
 public:
  enum class eCounts { kPlain, kSmeared };

  /// @param path        as for OutputFile
  /// @param nameColumn  header of the name column
  /// @throws as OutputFile
  CountsFile(const std::optional<std::string>& path,
             const std::string& nameColumn, eCounts counts = eCounts::kPlain);

  /// @param cell      the name as a CSV cell
  /// @param paths     number of light paths
  /// @param shadowed  number of shadowed light paths
  /// @param by        the component that shadows most, kNone for none
  /// @param smearedFraction  ignored for plain counts
  /// @throws as OutputFile::Write
  void Write(const std::string& cell, std::uint64_t paths,
             std::uint64_t shadowed, DU::eShadowingComponent by,
             std::optional<double> smearedFraction = std::nullopt);

  /// As in OutputFile.
  void Finish() { file_.Finish(); }
  void Commit() { file_.Commit(); }

 private:
  OutputFile file_;
  eCounts counts_;
};

}  // namespace ZARN::IO
