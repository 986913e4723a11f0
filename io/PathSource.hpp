#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/ColumnNames.hpp"
#include "io/LightPathBlock.hpp"
#include "io/TableError.hpp"
#include "lightpath/LightPath.hpp"

namespace ZARN::IO {

/// Some consecutive light paths of an input. One thread reads blocks, and
/// counts them in the same order once they are parsed; any thread may parse.
class PathBlock {
 public:
  virtual ~PathBlock() = default;

  /// Take the next paths of the input; false after the last.
  ///
  /// @throws BadInput if they cannot be read
  virtual bool Read() = 0;

  /// Turn what was read into the members below, up to the first error.
  virtual void Parse() = 0;

  /// Count the paths as done, for the places of later errors.
  virtual void Count() = 0;

  /// The error for the type, or for a name, of a path.
  ///
  /// @param number  of the column among NameColumns
  virtual TableError TypeError(std::size_t path,
                               const std::string& reason) const = 0;
  virtual TableError NameError(std::size_t path, std::size_t number,
                               const std::string& reason) const = 0;

  LightPathBlock paths;
  /// For each path the names of the source's NameColumns, kept in the block.
  std::vector<std::string_view> names;
  std::optional<TableError> error;
};

/// Light paths from an input of any kind, in blocks.
class PathSource {
 public:
  virtual ~PathSource() = default;

  /// Those of the columns event and pmt that the input has, in this order.
  virtual const std::vector<std::string>& NameColumns() const = 0;

  /// An empty block; the source must outlive it.
  virtual std::unique_ptr<PathBlock> MakeBlock() = 0;

  /// Whether reading a block would block waiting for input.
  virtual bool WouldWait() const = 0;

  /// Share of the input that is counted; nullopt if its size is unknown.
  virtual std::optional<double> Done() const = 0;

  /// Report an error in the first block that is not counted yet: throws
  /// BadInput.
  virtual void Fail(const TableError& error) const = 0;

  /// Read one path from a source of which nothing was read before.
  ///
  /// @param row  from 0
  /// @throws BadInput if it cannot be read or there is none
  virtual DU::LightPath ReadRow(std::uint64_t row) = 0;
};

/// Open a file of light paths: CSV, or a tree of a ROOT file (RootFile). The
/// content decides.
///
/// @param input  "-" is standard input
/// @param names  what the columns are called
/// @throws BadInput if it cannot be read or a column is missing
std::unique_ptr<PathSource> OpenPaths(const std::string& input,
                                      const ColumnNames& names);
std::unique_ptr<PathSource> OpenCsvPaths(const std::string& input,
                                         const ColumnNames& names);
std::unique_ptr<PathSource> OpenRootPaths(const std::string& input,
                                          const ColumnNames& names);

}  // namespace ZARN::IO
