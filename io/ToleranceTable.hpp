#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "io/Origin.hpp"
#include "io/OutputFile.hpp"

namespace ZARN::IO {

/// A file with the number of shadowed light paths for each tolerance and
/// component: CSV, or an RNTuple called "tolerances" if its name ends in
/// ".root". Columns: tolerance (mm), component, paths, shadowed, fraction and
/// fraction_error, its binomial standard error; without paths both are empty,
/// in an RNTuple NaN.
class ToleranceTable {
 public:
  /// @param path    as for OutputFile and VerdictNTuple
  /// @param origin  is written to an RNTuple only
  /// @throws as OutputFile and VerdictNTuple
  ToleranceTable(const std::optional<std::string>& path, const Origin& origin);
  ~ToleranceTable();

  /// @param component  its name, or "any"
  /// @param paths      number of light paths
  /// @param shadowed   number of those that it shadows
  /// @throws as OutputFile::Write
  void Write(double tolerance, const std::string& component,
             std::uint64_t paths, std::uint64_t shadowed);

  /// As in OutputFile.
  void Finish();
  void Commit();

 private:
  struct Fields;  // in ROOT's terms

  // One of these:
  std::optional<OutputFile> csv_;
  std::unique_ptr<Fields> ntuple_;
};

}  // namespace ZARN::IO
