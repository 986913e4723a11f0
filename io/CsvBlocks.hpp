#pragma once

#include <cstddef>
#include <vector>

#include "io/InputFile.hpp"

namespace ZARN::IO {

/// Part of a table, cut at the end of a row. CsvRows modifies it while reading.
struct CsvBlock {
  std::vector<char> bytes;
  std::size_t begin = 0;  ///< start of the text in bytes
  std::size_t end = 0;
};

/// Cuts a file into blocks of whole rows without reading their cells, so that
/// several threads can read one block each.
///
/// The file is read, not mapped: this works for pipes too, and a file that is
/// truncated meanwhile just ends earlier.
class CsvBlocks {
 public:
  static constexpr std::size_t kBlockSize = 256UL * 1024;

  /// @param input      must outlive this
  /// @param blockSize  bytes per read
  explicit CsvBlocks(InputFile& input, std::size_t blockSize = kBlockSize)
      : input_(input), blockSize_(blockSize) {}

  /// Read the next block; false at the end of the file. From a slow pipe, a
  /// block is returned as soon as it has a whole row.
  ///
  /// @throws as InputFile::Read
  bool Next(CsvBlock& block);

  /// Whether Next would block waiting for input.
  bool WouldWait() const { return input_.WouldWait(); }

 private:
  std::size_t EndOfLastRow(const char* text, std::size_t size);

  InputFile& input_;
  std::size_t blockSize_;
  std::vector<char> rest_;       // start of a row whose end is not read yet
  bool isWithinQuotes_ = false;  // at the end of what was read
};

}  // namespace ZARN::IO
