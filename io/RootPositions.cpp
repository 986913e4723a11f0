#include <algorithm>
#include <array>

#include "io/CsvText.hpp"
#include "io/PositionSource.hpp"
#include "io/RootTable.hpp"

namespace ZARN::IO {
namespace {

class RootPositions : public PositionReader::Source {
 public:
  RootPositions(const std::string& input, const std::string& nameColumn,
                const ColumnNames& names)
      : table_(input) {
    const auto columns =
        table_.RequireColumns({nameColumn, "x", "y", "z"}, names);
    nameColumn_ = table_.SelectNames(columns[0]);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      columns_[i] = table_.SelectNumbers(columns[i + 1]);
    }
  }

  bool Next(NamedPosition& item) override {
    if (next_ == table_.Entries()) return false;
    if (next_ == first_ + texts_.size()) ReadBlock();
    const auto i = static_cast<std::size_t>(next_++ - first_);
    item.name = texts_[i];
    item.cell = CsvCell(item.name);
    item.position.SetXYZ(values_[0][i], values_[1][i], values_[2][i]);
    return true;
  }

  void FailName(const std::string& reason) const override {
    table_.Fail(nameColumn_, next_ - 1, reason);
  }

  std::optional<double> Done() const override {
    return static_cast<double>(next_) / static_cast<double>(table_.Entries());
  }

  const std::string& Name() const override { return table_.Name(); }

 private:
  void ReadBlock() {
    constexpr std::uint64_t kMost = 4096;
    first_ = next_;
    const auto size =
        static_cast<std::size_t>(std::min(kMost, table_.Entries() - first_));
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      values_[i].resize(size);
      table_.Read(columns_[i], first_, size, values_[i].data());
    }
    texts_.resize(size);
    if (table_.IsText(nameColumn_)) {
      table_.Read(nameColumn_, first_, size, texts_.data());
      return;
    }
    integers_.resize(size);
    table_.Read(nameColumn_, first_, size, integers_.data());
    std::transform(integers_.begin(), integers_.end(), texts_.begin(),
                   [](std::int64_t i) { return std::to_string(i); });
  }

  RootTable table_;
  std::size_t nameColumn_;
  std::array<std::size_t, 3> columns_ = {};
  std::uint64_t next_ = 0;
  std::uint64_t first_ = 0;  // of the block
  std::array<std::vector<double>, 3> values_;
  std::vector<std::int64_t> integers_;
  std::vector<std::string> texts_;
};

}  // namespace

std::unique_ptr<PositionReader::Source> OpenRootPositions(
    const std::string& input, const std::string& nameColumn,
    const ColumnNames& names) {
  return std::make_unique<RootPositions>(input, nameColumn, names);
}

}  // namespace ZARN::IO
