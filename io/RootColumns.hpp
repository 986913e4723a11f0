#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZARN::IO {

class RootFile;

/// What a column of a tree holds, as far as this is of use here.
enum class eRootValue { kNumber, kInteger, kText, kOther };

struct RootColumn {
  std::string name;
  eRootValue value = eRootValue::kOther;
  std::string type;  ///< in ROOT's words, for messages
};

/// Entries cannot be read, from one on.
class RootReadError : public std::runtime_error {
 public:
  RootReadError(std::uint64_t entry, const std::string& reason)
      : std::runtime_error(reason), entry_(entry) {}
  std::uint64_t Entry() const { return entry_; }

 private:
  std::uint64_t entry_;
};

/// The columns of a TTree or an RNTuple.
class RootColumns {
 public:
  virtual ~RootColumns() = default;

  std::uint64_t Entries() const { return entries_; }
  /// The first entry of each cluster. Entries of one cluster are read fastest.
  const std::vector<std::uint64_t>& ClusterStarts() const { return starts_; }
  /// Also those inside others, as "event.x".
  const std::vector<RootColumn>& Columns() const { return columns_; }

  /// Choose columns, by their positions in Columns, that are read from now on.
  /// A column of integers can be read as one of numbers.
  ///
  /// @param types  how they are read
  virtual void Select(const std::vector<std::size_t>& columns,
                      const std::vector<eRootValue>& types) = 0;

  /// Read entries of a selected column, which was selected for such values.
  ///
  /// @param column  among the selected ones
  /// @throws RootReadError
  virtual void Read(std::size_t column, std::uint64_t first, std::size_t count,
                    double* values) = 0;
  virtual void Read(std::size_t column, std::uint64_t first, std::size_t count,
                    std::int64_t* values) = 0;
  virtual void Read(std::size_t column, std::uint64_t first, std::size_t count,
                    std::string* values) = 0;

 protected:
  std::uint64_t entries_ = 0;
  std::vector<std::uint64_t> starts_;
  std::vector<RootColumn> columns_;
};

/// @param file  must outlive the columns
std::unique_ptr<RootColumns> MakeTreeColumns(RootFile& file);
std::unique_ptr<RootColumns> MakeNTupleColumns(RootFile& file);

}  // namespace ZARN::IO
