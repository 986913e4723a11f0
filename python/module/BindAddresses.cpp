#include <cstdint>

#include "python/module/Bindings.hpp"
#include "python/module/Unlocked.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

template <class Thing>
std::uintptr_t AddressOf(const Thing& thing) {
  return reinterpret_cast<std::uintptr_t>(&thing);
}

}  // namespace

void BindAddresses(nb::module_& module, nb::class_<Calculator>& calculator) {
  nb::class_<DU::LightPathCalculator>(module, "LightPathCalculator",
                                      "Computes light paths.")
      .def_prop_ro("address", &AddressOf<DU::LightPathCalculator>);
  calculator
      .def_prop_ro(
          "shadowing_address",
          [](const Calculator& self) { return AddressOf(self.Shadowing()); },
          "Of the ShadowingCalculator, valid as long as this.")
      .def("light_path_calculator", &Calculator::LightPaths,
           nb::arg("wavelength"), nb::call_guard<Unlocked>());
}

}  // namespace ZARN::Python
