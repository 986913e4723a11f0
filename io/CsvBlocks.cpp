#include "io/CsvBlocks.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "io/CsvRows.hpp"

namespace ZARN::IO {
namespace {

bool HasOddQuotes(const char* begin, const char* end) {
  // Most texts have no quote; memchr finds that out faster than counting.
  const auto size = static_cast<std::size_t>(end - begin);
  const auto* const first =
      static_cast<const char*>(std::memchr(begin, '"', size));
  return first != nullptr && std::count(first, end, '"') % 2 != 0;
}

/// Whether a row that starts with this text is too long, whatever follows, so
/// that CsvRows can reject it already.
///
/// A byte of text takes at most two bytes in the file (a doubled quote), an
/// empty cell at most three (two quotes and a comma). After kFar bytes the row
/// has therefore used up its limit, and only bare commas may follow: CsvRows
/// does not limit their number, but counts them. The last byte is ignored,
/// because its meaning may depend on the next one.
bool IsTooLong(std::string_view text) {
  constexpr std::size_t kFar = 4 * CsvRows::kMaxRowSize;
  return text.size() > kFar &&
         text.find_first_not_of(',', kFar) < text.size() - 1;
}

}  // namespace

bool CsvBlocks::Next(CsvBlock& block) {
  block.begin = 0;
  block.end = rest_.size();
  block.bytes.resize(std::max(block.bytes.size(), block.end));
  std::copy(rest_.begin(), rest_.end(), block.bytes.begin());
  rest_.clear();
  while (true) {
    block.bytes.resize(std::max(block.bytes.size(), block.end + blockSize_));
    char* const fresh = block.bytes.data() + block.end;
    const std::size_t count = input_.Read(fresh, blockSize_);
    if (count == 0) return block.end > 0;
    const std::size_t whole = EndOfLastRow(fresh, count);
    if (whole > 0) {
      rest_.assign(fresh + whole, fresh + count);
      block.end += whole;
      return true;
    }
    block.end += count;
    if (IsTooLong({block.bytes.data(), block.end})) return true;
  }
}

/// Where the last complete row ends in the text that was just read; 0 if there
/// is none. A newline ends a row unless a quote is open. In well-formed rows,
/// quotes open and close in turn, so an even number of quotes means that none
/// is open.
std::size_t CsvBlocks::EndOfLastRow(const char* text, std::size_t size) {
  isWithinQuotes_ ^= HasOddQuotes(text, text + size);
  bool isWithinQuotes = isWithinQuotes_;
  const std::string_view all(text, size);
  std::size_t end = size;
  while (true) {
    const std::size_t newline = all.substr(0, end).rfind('\n');
    if (newline == std::string_view::npos) return 0;
    isWithinQuotes ^= HasOddQuotes(text + newline, text + end);
    if (!isWithinQuotes) return newline + 1;
    end = newline;
  }
}

}  // namespace ZARN::IO
