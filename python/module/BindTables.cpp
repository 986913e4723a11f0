#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <string>
#include <vector>

#include "db/JsonTables.hpp"
#include "db/TableSet.hpp"
#include "du/CheckTables.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Text.hpp"
#include "python/module/Unlocked.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

TableSet ReadTables(const nb::bytes& source, const nb::bytes& overrides) {
  const std::string path = PathOf(source);
  const std::string over = PathOf(overrides);
  const Unlocked unlocked;
  TableSet tables;
  LoadJsonTables(tables, path);
  if (!over.empty()) tables.Override(ReadJsonTables(over));
  return tables;
}

/// The fields of zarn.TableFinding, in their order.
nb::list ListOf(const std::vector<DU::TableFinding>& findings) {
  nb::list list;
  for (const DU::TableFinding& found : findings) {
    list.append(nb::make_tuple(
        DU::NameOf(found.severity), static_cast<int>(found.component),
        TextOf(found.table), TextOf(found.index), TextOf(found.field),
        TextOf(found.place), TextOf(found.problem), TextOf(found.value),
        TextOf(found.remedy), TextOf(DU::TextOf(found))));
  }
  return list;
}

nb::list CheckTables(TableSet tables, int run) {
  std::vector<DU::TableFinding> findings;
  {
    const Unlocked unlocked;
    tables.SetRun(run);
    findings = DU::CheckTables(tables);
  }
  return ListOf(findings);
}

nb::list CheckPMTs(TableSet tables, int run,
                   const std::vector<std::string>& names,
                   const DenseIn<double, 2>& positions) {
  std::vector<DU::TableFinding> findings;
  const std::vector<TVector3> points = VectorsIn(positions);
  {
    const Unlocked unlocked;
    tables.SetRun(run);
    findings = DU::CheckPMTs(tables, names, points);
  }
  return ListOf(findings);
}

}  // namespace

void BindTables(nb::module_& module) {
  const nb::class_<TableSet> tables(module, "Tables", "Tables of all runs.");
  module.def("read_tables", &ReadTables, nb::arg("source"),
             nb::arg("overrides"),
             "Read a JSON file or folder, and lay another one over it unless "
             "that is empty.");
  module.def("check_tables", &CheckTables, nb::arg("tables"), nb::arg("run"));
  module.def("check_pmts", &CheckPMTs, nb::arg("tables"), nb::arg("run"),
             nb::arg("names"), nb::arg("positions").noconvert());
}

}  // namespace ZARN::Python
