#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/OutputFile.hpp"

namespace ZARN::IO {

/// A CSV file with one row of counts for each PMT, or for each event: its name,
/// paths, shadowed, fraction (empty without paths) and by, the component that
/// shadows most.
class CountsFile {
 public:
  /// @param path        as for OutputFile
  /// @param nameColumn  what the column of names is called
  /// @throws as OutputFile
  CountsFile(const std::optional<std::string>& path,
             const std::string& nameColumn);

  /// @param cell      the name, as a cell of CSV
  /// @param paths     how many light paths there are
  /// @param shadowed  how many of them are shadowed
  /// @param by        the component that shadows most, kNone for none
  /// @throws as OutputFile::Write
  void Write(const std::string& cell, std::uint64_t paths,
             std::uint64_t shadowed, DU::eShadowingComponent by);

  /// As OutputFile's.
  void Finish() { file_.Finish(); }
  void Commit() { file_.Commit(); }

 private:
  OutputFile file_;
};

}  // namespace ZARN::IO
