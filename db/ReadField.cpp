#include "db/ReadField.hpp"

namespace ZARN {
namespace {

/// A link to the entry that should have a field; if there is no entry, the
/// error also names the field.
simple_ptr_nocopy<DBLink> LinkTo(const TableSet& tables,
                                 const std::string& table,
                                 const std::string& index,
                                 const std::string& field) {
  try {
    return tables.GetLink(table, index, TableSet::kHighestPass);
  } catch (const DBNotFoundError& error) {
    throw DBNotFoundError(error.what() + (", so no field " + field));
  }
}

}  // namespace

double ReadNumber(const TableSet& tables, const std::string& table,
                  const std::string& index, const std::string& field) {
  return LinkTo(tables, table, index, field)->GetD(field);
}

std::vector<double> ReadNumbers(const TableSet& tables,
                                const std::string& table,
                                const std::string& index,
                                const std::string& field) {
  return LinkTo(tables, table, index, field)->GetDArray(field);
}

std::string ReadString(const TableSet& tables, const std::string& table,
                       const std::string& index, const std::string& field) {
  return LinkTo(tables, table, index, field)->GetS(field);
}

bool IsNumber(const TableSet& tables, const std::string& table,
              const std::string& index, const std::string& field) {
  return LinkTo(tables, table, index, field)->IsNumber(field);
}

}  // namespace ZARN
