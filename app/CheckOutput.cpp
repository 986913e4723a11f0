#include "app/CheckOutput.hpp"

#include <utility>

#include "app/Signals.hpp"
#include "du/Verdict.hpp"
#include "io/FileNames.hpp"

namespace ZARN::App {

CheckOutput::CheckOutput(const CheckOptions& options, const IO::Origin& origin,
                         std::vector<std::string> nameColumns)
    : nameColumns_(std::move(nameColumns)),
      rowText_(nameColumns_, options.verdicts.PairColumns()) {
  if (options.verdicts.WritesNTuple()) {
    ntuple_.emplace(*options.verdicts.output, origin,
                    options.verdicts.PairColumns());
    return;
  }
  csv_.emplace(options.verdicts.output);
  sidecar_.emplace(options.verdicts.output, origin);
  csv_->Write(rowText_.Header());
}

void CheckOutput::BeginBlock(const PathCheck::CheckedBlock& block,
                             const IO::PathSource& source) {
  if (!ntuple_.has_value() || block.verdicts.empty()) return;
  if (!ntuple_->HasBegun()) {
    for (const auto& firstText : block.firstTexts) {
      areIntegers_.push_back(!firstText.has_value());
    }
    BeginNTuple(areIntegers_);
  }
  for (std::size_t column = 0; column < nameColumns_.size(); ++column) {
    const std::optional<IO::TableError>& firstText = block.firstTexts[column];
    if (areIntegers_[column] && firstText.has_value()) source.Fail(*firstText);
  }
}

void CheckOutput::BeginNTuple(const std::vector<bool>& areIntegers) {
  std::vector<IO::PathVerdictNTuple::NameColumn> columns;
  for (std::size_t i = 0; i < nameColumns_.size(); ++i) {
    columns.push_back({nameColumns_[i], areIntegers[i]});
  }
  ntuple_->Begin(columns);
}

void CheckOutput::Write(const std::string_view* names,
                        DU::eShadowingComponent by,
                        const IO::PathDetails& details) {
  const std::uint64_t row = rows_++;
  if (ntuple_.has_value()) {
    ntuple_->Fill(names, IO::JudgedPath(DU::VerdictOf(by), details));
    return;
  }
  text_.Clear();
  rowText_.AppendRow(text_, row, names, by, details);
  csv_->Write(text_.Text());
}

void CheckOutput::Commit() {
  if (ntuple_.has_value()) {
    if (!ntuple_->HasBegun()) {  // there are no rows
      BeginNTuple(std::vector<bool>(nameColumns_.size(), false));
    }
    ntuple_->Finish();
    ThrowIfInterrupted();
    ntuple_->Commit();
    return;
  }
  csv_->Finish();
  sidecar_->Finish();
  ThrowIfInterrupted();
  csv_->Commit();
  sidecar_->Commit();
}

}  // namespace ZARN::App
