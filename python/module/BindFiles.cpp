#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "io/CodeNTuple.hpp"
#include "io/DistinctFiles.hpp"
#include "io/IntegerName.hpp"
#include "io/InterruptCheck.hpp"
#include "io/PositionReader.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Text.hpp"
#include "python/module/Unlocked.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

using Positions = std::vector<IO::NamedPosition>;

/// Memory that an array of Python takes over.
template <class Number>
nb::object ArrayOf(std::vector<Number> numbers,
                   std::initializer_list<std::size_t> shape) {
  auto* const kept = new std::vector<Number>(std::move(numbers));
  const nb::capsule owner(kept, [](void* memory) noexcept {
    delete static_cast<std::vector<Number>*>(memory);
  });
  return nb::cast(nb::ndarray<nb::numpy, Number>(kept->data(), shape, owner));
}

/// Integers if all names are, else the bytes of the names.
nb::object NamesOf(const Positions& items) {
  std::vector<std::int64_t> integers;
  integers.reserve(items.size());
  for (const IO::NamedPosition& item : items) {
    const std::optional<std::int64_t> integer = IO::IntegerOf(item.name);
    if (!integer.has_value()) break;
    integers.push_back(*integer);
  }
  if (integers.size() == items.size()) {
    return ArrayOf(std::move(integers), {items.size()});
  }
  nb::list names;
  for (const IO::NamedPosition& item : items) {
    names.append(nb::bytes(item.name.data(), item.name.size()));
  }
  return names;
}

nb::object CoordinatesOf(const Positions& items) {
  std::vector<double> numbers;
  numbers.reserve(3 * items.size());
  for (const IO::NamedPosition& item : items) {
    for (int axis = 0; axis < 3; ++axis) numbers.push_back(item.position[axis]);
  }
  return ArrayOf(std::move(numbers), {items.size(), 3});
}

/// Lets Python handle a signal, such as Ctrl-C, before a read that may wait.
void HandleSignals() {
  const nb::gil_scoped_acquire locked;
  if (PyErr_CheckSignals() != 0) throw nb::python_error();
}

void BindReadPositions(nb::module_& module) {
  IO::SetInterruptCheck(&HandleSignals);
  module.def(
      "require_distinct_files",
      [](const std::vector<nb::bytes>& inputs) {
        std::vector<std::string> names;
        for (const nb::bytes& input : inputs) names.push_back(PathOf(input));
        IO::RequireDistinctFiles(names, {});
      },
      nb::arg("inputs"), "Refuse one file as two inputs.");
  module.def(
      "read_positions",
      [](const nb::bytes& path, const std::string& nameColumn) {
        Positions items;
        {
          const std::string name = PathOf(path);
          const Unlocked unlocked;
          items = IO::ReadPositions(name, nameColumn);
        }
        return nb::make_tuple(NamesOf(items), CoordinatesOf(items));
      },
      nb::arg("path"), nb::arg("name_column"),
      "The names and positions in a file, as the command reads them.");
}

using Codes = DenseIn<std::uint8_t, 2>;

void AddRows(IO::CodeNTuple& file, const std::vector<std::string>& events,
             const Codes& codes, const std::optional<Codes>& reflected) {
  const auto fits = [&](const Codes& array) {
    return array.shape(0) == events.size() && array.shape(1) == file.PMTs();
  };
  if (!fits(codes) || reflected.has_value() != file.HasReflections() ||
      (reflected.has_value() && !fits(*reflected))) {
    throw std::invalid_argument("codes: expected one for each event and PMT");
  }
  const Unlocked unlocked;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const std::size_t begin = i * file.PMTs();
    file.Add(events[i], codes.data() + begin,
             reflected.has_value() ? reflected->data() + begin : nullptr);
  }
}

void BindCodeNTuple(nb::module_& module) {
  nb::class_<IO::CodeNTuple>(module, "CodeNTuple",
                             "A ROOT file of the numbers of verdicts.")
      .def(
          "__init__",
          [](IO::CodeNTuple* self, const nb::bytes& path,
             const std::string& program, int run, double tolerance,
             double wavelength, const std::string& fingerprint,
             std::vector<std::string> pmts, bool integerEvents,
             bool integerPMTs, bool reflections) {
            const IO::Origin origin = {program,   ZARN_VERSION, run,
                                       tolerance, wavelength,   fingerprint};
            new (self)
                IO::CodeNTuple(PathOf(path), origin, std::move(pmts),
                               {integerEvents, integerPMTs, reflections});
          },
          nb::arg("path"), nb::arg("program"), nb::arg("run"),
          nb::arg("tolerance"), nb::arg("wavelength"), nb::arg("fingerprint"),
          nb::arg("pmts"), nb::arg("integer_events"), nb::arg("integer_pmts"),
          nb::arg("reflections"))
      .def("add", &AddRows, nb::arg("events"), nb::arg("codes").noconvert(),
           nb::arg("reflected").noconvert().none())
      .def("commit", &IO::CodeNTuple::Commit, nb::call_guard<Unlocked>());
}

}  // namespace

void BindFiles(nb::module_& module) {
  module.attr("version") = ZARN_VERSION;
  BindReadPositions(module);
  BindCodeNTuple(module);
}

}  // namespace ZARN::Python
