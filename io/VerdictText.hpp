#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "du/Verdict.hpp"
#include "du/hardware/ShadowingComponent.hpp"
#include "io/PairColumns.hpp"
#include "io/PieceText.hpp"
#include "io/PositionReader.hpp"
#include "lightpath/LightPathType.hpp"

namespace ZARN::IO {

/// The value of column "by" if an event has no light path to a PMT.
inline constexpr const char* kNoPath = "no path";

/// Append the cells shadowed (0 or 1) and by, without a line end.
void AppendVerdict(std::string& text, DU::eShadowingComponent by);

/// Append a comma and the cell of each column, and a line end.
void AppendColumns(PieceText& text,
                   const std::vector<const PairColumn*>& columns,
                   const JudgedPair& pair);

/// Makes the CSV rows of verdicts: the columns event, pmt, type, shadowed and
/// by, and then those of a list. Without a path type and shadowed are empty and
/// by is kNoPath.
class VerdictText {
 public:
  /// @param columns  after the usual ones; must outlive this
  VerdictText(const std::vector<NamedPosition>& pmts,
              std::vector<const PairColumn*> columns);

  /// The header, with its line end.
  std::string Header() const;

  /// The beginning of all rows of an event.
  static PieceText::Piece BeginOf(const NamedPosition& event) {
    return PieceText::Piece(event.cell + ",");
  }

  /// Append a row.
  ///
  /// @param begin  BeginOf the event
  /// @param pmt    number of the PMT
  /// @param type   of the path; ignored if there is none
  void AppendRow(PieceText& text, const PieceText::Piece& begin,
                 std::size_t pmt, DU::eLightPathType type,
                 const JudgedPair& pair) const {
    constexpr std::size_t kUsualName = 16;
    const std::string_view pmtCell(pmtCells_.data() + pmtBegins_[pmt],
                                   pmtBegins_[pmt + 1] - pmtBegins_[pmt]);
    const std::string_view ending =
        endings_[type][static_cast<std::size_t>(pair.verdict)].Text();
    text.Reserve(begin.Text().size() + pmtCell.size() + ending.size());
    text.Append<kUsualName>(begin.Text());
    text.Append<kUsualName>(pmtCell);
    text.Append<PieceText::kPadding>(ending);
    if (!columns_.empty()) AppendColumns(text, columns_, pair);
  }

 private:
  static constexpr std::size_t kVerdicts =
      static_cast<std::size_t>(DU::eVerdict::kNoReflectedPath) + 1;

  std::string pmtCells_;                // of all PMTs, each with a comma
  std::vector<std::size_t> pmtBegins_;  // of each in pmtCells_, and the end
  std::vector<const PairColumn*> columns_;
  /// The cells type, shadowed and by; with the line end if no column follows.
  std::array<std::array<PieceText::Piece, kVerdicts>,
             DU::kNumberOfLightPathTypes>
      endings_;
};

}  // namespace ZARN::IO
