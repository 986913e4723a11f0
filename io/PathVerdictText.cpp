#include "io/PathVerdictText.hpp"

#include <utility>

#include "du/Verdict.hpp"
#include "io/CsvText.hpp"
#include "io/VerdictText.hpp"

namespace ZARN::IO {

PathVerdictText::PathVerdictText(const std::vector<std::string>& nameColumns,
                                 std::vector<const PairColumn*> columns)
    : names_(nameColumns.size()), columns_(std::move(columns)) {
  header_ = "row,";
  for (const std::string& name : nameColumns) header_ += name + ",";
  header_ += "shadowed,by";
  for (const PairColumn* const column : columns_) {
    header_ += std::string(",") + column->name;
  }
  header_ += '\n';
  for (std::size_t by = 0; by < endings_.size(); ++by) {
    std::string text;
    AppendVerdict(text, static_cast<DU::eShadowingComponent>(by));
    if (columns_.empty()) text += '\n';
    endings_[by] = PieceText::Piece(text);
  }
}

void PathVerdictText::AppendRow(PieceText& text, std::uint64_t row,
                                const std::string_view* names,
                                DU::eShadowingComponent by,
                                const PathDetails& details) const {
  constexpr std::size_t kUsualEnding = 16;
  text.AppendNumber(row);
  text.Append(',');
  for (std::size_t i = 0; i < names_; ++i) {
    text.AppendText(CsvCell(names[i]));
    text.Append(',');
  }
  const std::string_view ending = endings_[static_cast<std::size_t>(by)].Text();
  text.Reserve(ending.size());
  text.Append<kUsualEnding>(ending);
  if (columns_.empty()) return;
  AppendColumns(text, columns_, JudgedPath(DU::VerdictOf(by), details));
}

}  // namespace ZARN::IO
