#pragma once

#include <optional>
#include <string>

#include "io/Origin.hpp"
#include "io/OutputFile.hpp"

namespace ZARN::IO {

/// The name of the file beside a CSV output that says how it was made:
/// "verdicts.csv.json" for "verdicts.csv".
///
/// @param output  as for OutputFile
/// @return nullopt if there is no such file: beside standard output, a pipe, a
///         device or a file that is already open, beside a ROOT file, which
///         holds its origin itself, and where the name would be too long
std::optional<std::string> SidecarName(
    const std::optional<std::string>& output);

/// The file of SidecarName, if there is one: a JSON object with the Origin. It
/// is finished and committed together with its output, so that they are never
/// from different runs.
class Sidecar {
 public:
  /// @param output  the output that it describes
  /// @throws as OutputFile
  Sidecar(const std::optional<std::string>& output, const Origin& origin);

  /// As in OutputFile. Finish it after its output: if the disk is full, the
  /// message then names the output.
  void Finish();
  void Commit();

 private:
  std::optional<OutputFile> file_;
};

}  // namespace ZARN::IO
