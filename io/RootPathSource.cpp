#include <algorithm>
#include <charconv>

#include "io/Errors.hpp"
#include "io/PathSource.hpp"
#include "io/RootPaths.hpp"

namespace ZARN::IO {
namespace {

/// What the blocks of one source share.
struct RootInput {
  RootInput(const std::string& input, const ColumnNames& names)
      : paths(input, names) {}

  RootPaths paths;
  std::vector<std::string> nameColumns;
  std::uint64_t read = 0;
  std::uint64_t counted = 0;
};

class RootPathBlock : public PathBlock {
 public:
  explicit RootPathBlock(RootInput& input) : input_(input) {}

  bool Read() override {
    // Few enough that the columns stay in the second-level cache, many enough
    // that reading a block costs little besides its values.
    constexpr std::uint64_t kMost = 2048;
    const std::uint64_t left = input_.paths.Entries() - input_.read;
    const auto size = static_cast<std::size_t>(std::min(kMost, left));
    if (size == 0) return false;
    std::swap(block_.paths, paths);  // reuse the columns
    input_.paths.Read(input_.read, size, block_);
    std::swap(block_.paths, paths);
    input_.read += size;
    return true;
  }

  void Parse() override {
    const std::size_t columns = block_.names.size();
    constexpr std::size_t kLongest = 20;  // characters of an integer
    text_.resize(paths.Size() * columns * kLongest);
    names.resize(paths.Size() * columns);
    char* end = text_.data();
    for (std::size_t column = 0; column < columns; ++column) {
      const RootPaths::Names& itsNames = block_.names[column];
      for (std::size_t i = 0; i < paths.Size(); ++i) {
        std::string_view& name = names[i * columns + column];
        if (input_.paths.NameColumns()[column].isText) {
          name = itsNames.texts[i];
          continue;
        }
        char* const begin = end;
        end = std::to_chars(begin, begin + kLongest, itsNames.integers[i]).ptr;
        name = {begin, static_cast<std::size_t>(end - begin)};
      }
    }
  }

  void Count() override { input_.counted += paths.Size(); }

  TableError TypeError(std::size_t path,
                       const std::string& reason) const override {
    return {{0, path, 0}, reason};
  }
  TableError NameError(std::size_t path, std::size_t number,
                       const std::string& reason) const override {
    return {{0, path, 1 + number}, reason};
  }

 private:
  RootInput& input_;
  RootPaths::Block block_;  // its paths are in the base
  std::string text_;        // names that were integers
};

class RootPathSource : public PathSource {
 public:
  RootPathSource(const std::string& input, const ColumnNames& names)
      : input_(input, names) {
    for (const RootPaths::NameColumn& column : input_.paths.NameColumns()) {
      input_.nameColumns.push_back(column.name);
    }
  }

  const std::vector<std::string>& NameColumns() const override {
    return input_.nameColumns;
  }
  std::unique_ptr<PathBlock> MakeBlock() override {
    return std::make_unique<RootPathBlock>(input_);
  }
  bool WouldWait() const override { return false; }

  std::optional<double> Done() const override {
    return static_cast<double>(input_.counted) /
           static_cast<double>(input_.paths.Entries());
  }

  void Fail(const TableError& error) const override {
    const TableError::Place& place = error.Where();
    const std::uint64_t entry = input_.counted + place.row;
    if (place.column == 0) input_.paths.FailType(entry, error.what());
    input_.paths.FailName(place.column - 1, entry, error.what());
  }

  DU::LightPath ReadRow(std::uint64_t row) override {
    if (row >= input_.paths.Entries()) {
      throw BadInput(input_.paths.Name() + ": there is no row " +
                     std::to_string(row + 1) + "; the number of rows is " +
                     std::to_string(input_.paths.Entries()));
    }
    RootPaths::Block block;
    input_.paths.Read(row, 1, block);
    return block.paths.Arrays().At(0);
  }

 private:
  RootInput input_;
};

}  // namespace

std::unique_ptr<PathSource> OpenRootPaths(const std::string& input,
                                          const ColumnNames& names) {
  return std::make_unique<RootPathSource>(input, names);
}

}  // namespace ZARN::IO
