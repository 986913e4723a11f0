#include <nanobind/nanobind.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>

#include <exception>
#include <optional>
#include <string>

#include "db/TableSet.hpp"
#include "python/module/Text.hpp"
#include "python/module/Unlocked.hpp"
#include "sql/TableSource.hpp"
#include "sql/TableStore.hpp"

namespace ZARN::Python {
namespace {

namespace nb = nanobind;
using Time = std::optional<std::string>;

TableSet ReadTables(const nb::bytes& source, const nb::bytes& overrides,
                    const Time& asOf) {
  const TableSource from = {PathOf(source), PathOf(overrides), asOf};
  const Unlocked unlocked;
  TableSet tables;
  LoadTables(tables, from);
  return tables;
}

/// The time of the last import up to @p asOf. What is read as of this time
/// never changes, not even where @p asOf is still to come.
Time LastImport(const nb::bytes& source, const Time& asOf) {
  const std::string name = PathOf(source);
  const Unlocked unlocked;
  const Time end = asOf ? SQL::ParseTime(*asOf) : Time();
  Time last;
  for (const SQL::Import& import :
       SQL::TableStore::OpenToRead(name).Imports()) {
    if (!end || import.time <= *end) last = import.time;
  }
  return last;
}

void TranslateErrors() {
  nb::register_exception_translator([](const std::exception_ptr& error, void*) {
    try {
      std::rethrow_exception(error);
    } catch (const SQL::StoreError& found) {
      const nb::object type =
          nb::module_::import_("zarn._core").attr("StoreError");
      PyErr_SetObject(type.ptr(), TextOf(found.what()).ptr());
    }
  });
}

}  // namespace
}  // namespace ZARN::Python

NB_MODULE(_sql, module) {
  namespace nb = nanobind;
  module.doc() = "Tables in databases, for zarn.Calculator.";
  ZARN::Python::TranslateErrors();
  // The class of the tables is that of _core, which is imported before this
  // module, but not when its stub is made.
  module.def("read_tables", &ZARN::Python::ReadTables,
             nb::sig("def read_tables(source: bytes, overrides: bytes, "
                     "as_of: str | None) -> typing.Any"),
             nb::arg("source"), nb::arg("overrides"), nb::arg("as_of").none());
  module.def("last_import", &ZARN::Python::LastImport, nb::arg("source"),
             nb::arg("as_of").none());
}
