#include "db/DBLink.hpp"

#include <utility>

#include "db/DBErrors.hpp"

namespace ZARN {

DBLink::DBLink(std::shared_ptr<const TableEntry> entry)
    : entry_(std::move(entry)) {}

const TableField& DBLink::Find(const std::string& field) const {
  const auto found = entry_->fields.find(field);
  if (found == entry_->fields.end()) {
    throw DBNotFoundError("table " + entry_->table + ", index " +
                          entry_->index + ": there is no field " + field);
  }
  return found->second;
}

template <class Value>
const Value& DBLink::Get(const std::string& field, const char* wanted) const {
  const Value* const value = std::get_if<Value>(&Find(field));
  if (value == nullptr) {
    throw DBNotFoundError("table " + entry_->table + ", index " +
                          entry_->index + ": the field " + field + " is not " +
                          wanted);
  }
  return *value;
}

double DBLink::GetD(const std::string& field) const {
  return Get<double>(field, "a number");
}

std::vector<double> DBLink::GetDArray(const std::string& field) const {
  return Get<std::vector<double>>(field, "an array of numbers");
}

std::string DBLink::GetS(const std::string& field) const {
  return Get<std::string>(field, "a string");
}

bool DBLink::IsNumber(const std::string& field) const {
  return std::holds_alternative<double>(Find(field));
}

}  // namespace ZARN
