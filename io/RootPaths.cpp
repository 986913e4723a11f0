#include "io/RootPaths.hpp"

#include "io/LightPathColumns.hpp"
#include "io/RootTable.hpp"

namespace ZARN::IO {

RootPaths::RootPaths(const std::string& input, const ColumnNames& names)
    : table_(new RootTable(input)) {
  const auto required = table_->RequireColumns(LightPathColumns(), names);
  columns_.push_back(table_->SelectNames(required.front()));
  for (std::size_t i = 1; i < required.size(); ++i) {
    columns_.push_back(table_->SelectNumbers(required[i]));
  }
  for (const char* const name : {"event", "pmt"}) {
    const auto place = table_->FindColumn(names.Of(name));
    if (names.Has(name)) table_->RequireColumns({name}, names);
    // Of this name a file may have something else, of which nobody asked.
    if (!place.has_value() ||
        (!names.Has(name) && !table_->HoldsNames(*place))) {
      continue;
    }
    namePlaces_.push_back(table_->SelectNames(*place));
    nameColumns_.push_back({name, table_->IsText(namePlaces_.back())});
  }
}

RootPaths::~RootPaths() = default;

const std::string& RootPaths::Name() const { return table_->Name(); }

std::uint64_t RootPaths::Entries() const { return table_->Entries(); }

const std::vector<std::uint64_t>& RootPaths::ClusterStarts() const {
  return table_->ClusterStarts();
}

void RootPaths::Read(std::uint64_t first, std::size_t count, Block& block) {
  block.paths.Resize(count);
  block.paths.unknownTypes.clear();
  ReadTypes(first, count, block.paths);
  for (std::size_t i = 0; i < block.paths.coordinates.size(); ++i) {
    table_->Read(columns_[i + 1], first, count,
                 block.paths.coordinates[i].data());
  }
  block.names.resize(nameColumns_.size());
  for (std::size_t i = 0; i < nameColumns_.size(); ++i) {
    Names& names = block.names[i];
    if (nameColumns_[i].isText) {
      names.texts.resize(count);
      table_->Read(namePlaces_[i], first, count, names.texts.data());
    } else {
      names.integers.resize(count);
      table_->Read(namePlaces_[i], first, count, names.integers.data());
    }
  }
}

void RootPaths::ReadTypes(std::uint64_t first, std::size_t count,
                          LightPathBlock& paths) {
  const std::size_t column = columns_.front();
  if (table_->IsText(column)) {
    typeNames_.resize(count);
    table_->Read(column, first, count, typeNames_.data());
    for (std::size_t i = 0; i < count; ++i) paths.SetType(i, typeNames_[i]);
    return;
  }
  typeNumbers_.resize(count);
  table_->Read(column, first, count, typeNumbers_.data());
  for (std::size_t i = 0; i < count; ++i) paths.SetType(i, typeNumbers_[i]);
}

void RootPaths::FailType(std::uint64_t entry, const std::string& reason) const {
  table_->Fail(columns_.front(), entry, reason);
}

void RootPaths::FailName(std::size_t number, std::uint64_t entry,
                         const std::string& reason) const {
  table_->Fail(namePlaces_[number], entry, reason);
}

}  // namespace ZARN::IO
