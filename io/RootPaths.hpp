#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "io/ColumnNames.hpp"
#include "io/LightPathBlock.hpp"

namespace ZARN::IO {

class RootTable;

/// Reads light paths from a TTree or an RNTuple in bulk, at any place.
///
///     ZARN::IO::RootPaths paths("paths.root");
///     ZARN::IO::RootPaths::Block block;
///     paths.Read(0, 1000, block);
///     calculator.FindShadowing(block.paths.Arrays(), 1000, verdicts);
///
/// The columns are those of LightPathReader, numbers of any width: doubles,
/// floats or integers. The type is a name or a number (eLightPathType). The
/// columns event and pmt, which are optional, are integers or text.
///
/// One thread uses an object. Several objects can read one file at the same
/// time after ROOT::EnableThreadSafety().
class RootPaths {
 public:
  /// Names of events or PMTs: integers or texts, as the column is.
  struct Names {
    std::vector<std::int64_t> integers;
    std::vector<std::string> texts;
  };
  struct Block {
    LightPathBlock paths;
    std::vector<Names> names;  ///< as NameColumns
  };
  /// One of the columns event and pmt.
  struct NameColumn {
    std::string name;  ///< "event" or "pmt"
    bool isText;
  };

  /// @param input  "paths.root", or "paths.root:tree" if the file has several
  /// @param names  what the columns are called
  /// @throws BadInput if the file is damaged, if a column is missing or holds
  ///         something else
  explicit RootPaths(const std::string& input, const ColumnNames& names = {});
  RootPaths(const RootPaths&) = delete;
  RootPaths& operator=(const RootPaths&) = delete;
  ~RootPaths();

  /// "paths.root: tree "paths"", for messages.
  const std::string& Name() const;

  std::uint64_t Entries() const;

  /// The first entry of each cluster. A cluster is read fastest by one object.
  const std::vector<std::uint64_t>& ClusterStarts() const;

  /// Those of the columns event and pmt that the tree has, in this order.
  const std::vector<NameColumn>& NameColumns() const { return nameColumns_; }

  /// Read the paths of the entries [first, first + count).
  ///
  /// @throws BadInput naming file, tree, column and entry
  void Read(std::uint64_t first, std::size_t count, Block& block);

  /// Report an error in the type, or in the name, of an entry.
  [[noreturn]] void FailType(std::uint64_t entry,
                             const std::string& reason) const;
  [[noreturn]] void FailName(std::size_t number, std::uint64_t entry,
                             const std::string& reason) const;

 private:
  void ReadTypes(std::uint64_t first, std::size_t count, LightPathBlock& paths);

  std::unique_ptr<RootTable> table_;
  std::vector<std::size_t> columns_;  // type and coordinates, in the table
  std::vector<NameColumn> nameColumns_;
  std::vector<std::size_t> namePlaces_;  // in the table
  std::vector<std::int64_t> typeNumbers_;
  std::vector<std::string> typeNames_;
};

}  // namespace ZARN::IO
