#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/Origin.hpp"
#include "io/PairColumns.hpp"

namespace ZARN::IO {

/// A ROOT file with an RNTuple of verdicts on light paths that were given,
/// which appears complete or not at all.
///
/// The RNTuple is called "verdicts" and has the fields row (std::uint64_t, from
/// 0), names that were given with the paths (integers or strings), shadowed (0
/// or 1), by (string) and those of a list of columns. Its description is a JSON
/// object with the Origin.
class PathVerdictNTuple {
 public:
  struct NameColumn {
    std::string name;
    bool isInteger = false;  ///< whether IntegerOf has a value for every cell
  };

  /// @param path     as for VerdictNTuple
  /// @param columns  some of GivenPathColumns
  /// @throws OutputFailure if the file cannot be created
  PathVerdictNTuple(const std::string& path, Origin origin,
                    const std::vector<const PairColumn*>& columns);
  ~PathVerdictNTuple();

  /// Define the fields, before the first row.
  ///
  /// @throws OutputFailure
  void Begin(const std::vector<NameColumn>& names);
  bool HasBegun() const;

  /// Add the verdict on the next path.
  ///
  /// @param names  one for each column of names
  /// @throws OutputFailure
  void Fill(const std::string_view* names, const JudgedPair& path);

  /// Write buffered data, after Begin; then move the finished file to its final
  /// name.
  ///
  /// @throws OutputFailure
  void Finish();
  void Commit();

 private:
  struct Fields;  // in ROOT's terms

  Origin origin_;
  std::unique_ptr<Fields> fields_;
};

}  // namespace ZARN::IO
