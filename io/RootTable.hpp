#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "io/ColumnNames.hpp"
#include "io/RootColumns.hpp"
#include "io/RootFile.hpp"

namespace ZARN::IO {

/// A tree of a ROOT file whose columns are read in blocks of entries. Every
/// error is a BadInput that names file, tree, column and entry.
class RootTable {
 public:
  /// @param input  as for RootFile
  /// @throws BadInput
  explicit RootTable(const std::string& input);

  const std::string& Name() const { return file_.Name(); }
  std::uint64_t Entries() const { return columns_->Entries(); }
  const std::vector<std::uint64_t>& ClusterStarts() const {
    return columns_->ClusterStarts();
  }

  /// The position of the column with this name; nullopt if there is none.
  std::optional<std::size_t> FindColumn(const std::string& name) const;

  /// Positions of the columns with our names.
  ///
  /// @throws BadInput naming all missing columns
  std::vector<std::size_t> RequireColumns(const std::vector<std::string>& ours,
                                          const ColumnNames& names) const;

  const RootColumn& Column(std::size_t position) const {
    return columns_->Columns()[position];
  }

  /// Whether SelectNames takes a column.
  bool HoldsNames(std::size_t position) const;

  /// Choose a column that is read from now on, and how: as numbers, or as
  /// integers or text, whatever it holds. Call it for all columns first.
  ///
  /// @throws BadInput if it holds something else
  /// @return its number for Read and Fail
  std::size_t SelectNumbers(std::size_t position);
  std::size_t SelectNames(std::size_t position);

  /// Whether a selected column holds text.
  bool IsText(std::size_t number) const {
    return types_[number] == eRootValue::kText;
  }

  /// Read entries of a selected column into @p values: double for numbers,
  /// else std::int64_t or std::string.
  ///
  /// @throws BadInput
  template <class Value>
  void Read(std::size_t number, std::uint64_t first, std::size_t count,
            Value* values) {
    Begin();
    try {
      columns_->Read(number, first, count, values);
    } catch (const RootReadError& error) {
      Fail(number, error.Entry(),
           std::string("cannot be read: ") + error.what());
    }
  }

  /// Report an error in a value.
  [[noreturn]] void Fail(std::size_t number, std::uint64_t entry,
                         const std::string& reason) const;

 private:
  std::size_t Select(std::size_t position, eRootValue type);
  [[noreturn]] void FailType(std::size_t position,
                             const std::string& wanted) const;
  void Begin();

  RootFile file_;
  std::unique_ptr<RootColumns> columns_;
  std::vector<std::size_t> selected_;  // positions
  std::vector<eRootValue> types_;      // how they are read
  bool hasBegun_ = false;
};

}  // namespace ZARN::IO
