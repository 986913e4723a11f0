#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "du/ShadowingCalculator.hpp"
#include "io/ColumnNames.hpp"
#include "io/RootPaths.hpp"

namespace ZARN::RDF {

/// The light paths of a file, read and judged in blocks for one thread: a block
/// is read when one of its paths is looked for, and judged when one of its
/// verdicts is.
class JudgedPaths {
 public:
  /// @param calculator  must outlive this; null if no verdicts are wanted
  /// @throws IO::BadInput
  JudgedPaths(const std::string& input, const IO::ColumnNames& names,
              const DU::ShadowingCalculator* calculator)
      : paths_(input, names), calculator_(calculator) {}

  const IO::RootPaths& File() const { return paths_; }

  /// The place of an entry in the block, which this makes the one that has it.
  ///
  /// @throws IO::BadInput
  std::size_t Find(std::uint64_t entry) {
    if (entry < first_ || entry >= end_) Read(entry);
    return static_cast<std::size_t>(entry - first_);
  }

  const IO::RootPaths::Block& Block() const { return block_; }

  /// The numbers of the verdicts on the paths of the block.
  const std::vector<int>& Codes() {
    if (codes_.empty()) Judge();
    return codes_;
  }

 private:
  void Read(std::uint64_t entry);
  void Judge();

  IO::RootPaths paths_;
  const DU::ShadowingCalculator* calculator_;
  IO::RootPaths::Block block_;
  std::uint64_t first_ = 0;  // entries of the block
  std::uint64_t end_ = 0;
  std::vector<DU::eShadowingComponent> verdicts_;
  std::vector<int> codes_;  // empty if the block is not judged
};

}  // namespace ZARN::RDF
