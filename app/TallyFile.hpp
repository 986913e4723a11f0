#pragma once

#include <optional>
#include <string>

#include "app/OutputFile.hpp"
#include "app/VerdictTally.hpp"

namespace ZARN::App {

/// A CSV file with one row of counts for each PMT, or for each event.
class TallyFile {
 public:
  /// @param path        as for OutputFile
  /// @param nameColumn  what the column of names is called
  TallyFile(const std::optional<std::string>& path,
            const std::string& nameColumn);

  /// @param cell  the name, as a cell of CSV
  void Write(const std::string& cell, const VerdictTally& tally);

  void Finish() { file_.Finish(); }
  void Commit() { file_.Commit(); }

 private:
  OutputFile file_;
};

}  // namespace ZARN::App
