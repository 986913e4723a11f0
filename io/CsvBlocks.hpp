#pragma once

#include <cstddef>
#include <vector>

#include "io/InputFile.hpp"

namespace ZARN::IO {

/// Some text of a table, cut where rows end. Reading it (CsvRows) writes to it.
struct CsvBlock {
  std::vector<char> bytes;
  std::size_t begin = 0;  ///< of the text in bytes
  std::size_t end = 0;
};

/// Cuts a file into blocks of whole rows, without a look at their cells, so
/// that threads can read a block each.
///
/// The file is read, not mapped: pipes and files are then alike, and a file
/// that is cut short meanwhile merely ends sooner.
class CsvBlocks {
 public:
  static constexpr std::size_t kBlockSize = 256UL * 1024;

  /// @param input      must outlive this
  /// @param blockSize  how much is read at once
  explicit CsvBlocks(InputFile& input, std::size_t blockSize = kBlockSize)
      : input_(input), blockSize_(blockSize) {}

  /// Go on to the next block; false at the end of the file. What has come of a
  /// slow pipe is a block as soon as it has a whole line.
  ///
  /// @throws as InputFile::Read
  bool Next(CsvBlock& block);

  /// Whether Next would have to wait for more to come.
  bool WouldWait() const { return input_.WouldWait(); }

 private:
  std::size_t EndOfLastRow(const char* text, std::size_t size);

  InputFile& input_;
  std::size_t blockSize_;
  std::vector<char> rest_;       // the beginning of a row that goes on
  bool isWithinQuotes_ = false;  // at the end of what was read
};

}  // namespace ZARN::IO
