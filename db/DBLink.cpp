#include "db/DBLink.hpp"

#include <utility>

#include "db/DBErrors.hpp"

namespace ZARN {

DBLink::DBLink(std::shared_ptr<const TableEntry> entry)
    : entry_(std::move(entry)) {}

template <class Value>
const Value& DBLink::Get(const std::string& field, const char* wanted) const {
  const std::string place =
      "table " + entry_->table + ", index " + entry_->index + ": ";
  const auto found = entry_->fields.find(field);
  if (found == entry_->fields.end()) {
    throw DBNotFoundError(place + "there is no field " + field);
  }
  const Value* const value = std::get_if<Value>(&found->second);
  if (value == nullptr) {
    throw DBNotFoundError(place + "the field " + field + " is not " + wanted);
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

}  // namespace ZARN
