#include "io/VerdictText.hpp"

#include <optional>
#include <utility>

#include "io/CsvText.hpp"

namespace ZARN::IO {
namespace {

/// Append the cells type, shadowed and by.
void AppendPathVerdict(std::string& text, DU::eLightPathType type,
                       DU::eVerdict verdict) {
  if (!DU::HasPath(verdict)) {
    text += ",,";
    text += kNoPath;
    return;
  }
  text += DU::kLightPathTypeNames[type];
  text += ',';
  AppendVerdict(text, DU::ComponentOf(verdict));
}

}  // namespace

void AppendVerdict(std::string& text, DU::eShadowingComponent by) {
  text += by == DU::eShadowingComponent::kNone ? "0," : "1,";
  text += DU::NameOf(by);
}

void AppendColumns(PieceText& text,
                   const std::vector<const PairColumn*>& columns,
                   const JudgedPair& pair) {
  for (const PairColumn* const column : columns) {
    text.Append(',');
    if (column->kind == eValue::kText) {
      text.AppendText(CsvCell(column->text(pair)));
      continue;
    }
    const std::optional<double> value = column->value(pair);
    if (value.has_value()) text.AppendNumber(*value);
  }
  text.Append('\n');
}

VerdictText::VerdictText(const std::vector<NamedPosition>& pmts,
                         std::vector<const PairColumn*> columns)
    : columns_(std::move(columns)) {
  pmtBegins_.reserve(pmts.size() + 1);
  for (const NamedPosition& pmt : pmts) {
    pmtBegins_.push_back(pmtCells_.size());
    pmtCells_ += pmt.cell + ',';
  }
  pmtBegins_.push_back(pmtCells_.size());
  pmtCells_.append(PieceText::kPadding, ' ');
  for (std::size_t type = 0; type < endings_.size(); ++type) {
    for (std::size_t verdict = 0; verdict < kVerdicts; ++verdict) {
      std::string text;
      AppendPathVerdict(text, static_cast<DU::eLightPathType>(type),
                        static_cast<DU::eVerdict>(verdict));
      if (columns_.empty()) text += '\n';
      endings_[type][verdict] = PieceText::Piece(text);
    }
  }
}

std::string VerdictText::Header() const {
  std::string header = "event,pmt,type,shadowed,by";
  for (const PairColumn* const column : columns_) {
    header += std::string(",") + column->name;
  }
  return header + "\n";
}

}  // namespace ZARN::IO
