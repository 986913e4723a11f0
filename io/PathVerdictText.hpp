#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "du/hardware/ShadowingComponent.hpp"
#include "io/PairColumns.hpp"
#include "io/PathDetails.hpp"
#include "io/PieceText.hpp"

namespace ZARN::IO {

/// Makes the CSV rows of verdicts on light paths of a file: the number of the
/// row, the names copied from the file, shadowed and by, and then the columns
/// of a list.
class PathVerdictText {
 public:
  /// @param nameColumns  headers of the names
  /// @param columns      after the usual ones; must outlive this
  PathVerdictText(const std::vector<std::string>& nameColumns,
                  std::vector<const PairColumn*> columns);

  /// The header, with its line end.
  const std::string& Header() const { return header_; }

  /// Append a row.
  ///
  /// @param row      its number
  /// @param names    one for each column of names
  /// @param details  those that the columns need
  void AppendRow(PieceText& text, std::uint64_t row,
                 const std::string_view* names, DU::eShadowingComponent by,
                 const PathDetails& details) const;

 private:
  std::size_t names_;
  std::vector<const PairColumn*> columns_;
  std::string header_;
  /// The cells shadowed and by; with the line end if no column follows.
  std::array<PieceText::Piece, DU::kNumberOfComponents + 1> endings_;
};

}  // namespace ZARN::IO
