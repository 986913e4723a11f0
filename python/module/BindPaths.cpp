#include <nanobind/stl/string.h>

#include <algorithm>
#include <cstdint>
#include <thread>

#include "du/Verdict.hpp"
#include "io/ExplanationText.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Calculator.hpp"
#include "python/module/Interruptible.hpp"
#include "python/module/Paths.hpp"
#include "python/module/Unlocked.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

// A thread judges so many paths before it looks whether to stop, and fewer
// without looking: a few milliseconds.
constexpr std::size_t kPathsAtOnce = 1UL << 16U;

/// Call @p work(first, count) for all paths, a part at a time, without the
/// interpreter lock; Ctrl-C ends it.
template <class Work>
void ForParts(std::size_t count, std::size_t most, const Work& work) {
  if (count <= most) {
    const Unlocked unlocked;
    work(0, count);
    return;
  }
  Interruptible run;
  run.Run([&] {
    for (std::size_t first = 0; first < count; first += most) {
      run.CheckForStop();
      work(first, std::min(most, count - first));
    }
  });
}

void Check(const Calculator& calculator, const nb::object& types,
           const nb::list& columns, const DenseOut<std::uint8_t, 1>& codes,
           std::size_t threads) {
  const Paths paths(types, columns);
  if (codes.shape(0) != paths.Count()) {
    throw nb::value_error("out does not have one element for each path");
  }
  // A component has the number of its verdict.
  static_assert(sizeof(DU::eShadowingComponent) == sizeof(std::uint8_t));
  auto* const verdicts =
      reinterpret_cast<DU::eShadowingComponent*>(codes.data());
  // More threads than cores do not work faster.
  const std::size_t working =
      std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, threads);
  ForParts(paths.Count(), kPathsAtOnce * working,
           [&](std::size_t first, std::size_t count) {
             calculator.Shadowing().FindShadowing(
                 paths.Arrays().From(first), count, verdicts + first, threads);
           });
}

void FindCriticalTolerances(const Calculator& calculator,
                            const nb::object& types, const nb::list& columns,
                            const DenseOut<double, 2>& tolerances) {
  const Paths paths(types, columns);
  if (tolerances.shape(0) != paths.Count() ||
      tolerances.shape(1) != DU::kNumberOfComponents) {
    throw nb::value_error("out does not have a row for each path");
  }
  constexpr std::size_t kAtOnce = 1UL << 12U;
  ForParts(paths.Count(), kAtOnce, [&](std::size_t first, std::size_t count) {
    for (std::size_t i = first; i < first + count; ++i) {
      const DU::CriticalTolerances found =
          calculator.Shadowing().FindCriticalTolerances(paths.Arrays().At(i));
      std::copy(found.of.begin(), found.of.end(),
                tolerances.data() + i * DU::kNumberOfComponents);
    }
  });
}

/// What IO writes of an explanation: in words, and as JSON.
nb::tuple TextsOf(const DU::LightPathCalculator& light,
                  const Calculator& calculator) {
  const DU::ShadowingExplanation explanation =
      calculator.Shadowing().Explain(light.GetLightPath());
  return nb::make_tuple(IO::ExplanationText(light, explanation),
                        IO::ExplanationJson(light, explanation));
}

nb::tuple ExplainPath(const Calculator& calculator, const nb::object& type,
                      const nb::list& columns) {
  const Paths paths(type, columns);
  if (paths.Count() != 1) throw nb::value_error("expected one path");
  DU::LightPathCalculator light;
  light.SetLightPath(paths.Arrays().At(0));
  return TextsOf(light, calculator);
}

nb::tuple ExplainPair(const Calculator& calculator,
                      const DenseIn<double, 2>& eventAndPMT, double wavelength,
                      bool isReflected) {
  const std::vector<TVector3> positions = VectorsIn(eventAndPMT);
  DU::LightPathCalculator light = calculator.LightPaths(wavelength);
  if (isReflected) {
    light.CalcReflectionByPosition(positions.at(0), positions.at(1));
  } else {
    light.CalcByPosition(positions.at(0), positions.at(1));
  }
  if (light.HasPath()) return TextsOf(light, calculator);
  const DU::eVerdict verdict = calculator.Shadowing().FindVerdict(
      light, positions.at(0), positions.at(1),
      isReflected ? DU::eLight::kReflected : DU::eLight::kDirect);
  return nb::make_tuple(IO::NoPathText(verdict), IO::NoPathJson(verdict));
}

}  // namespace

void BindPaths(nb::class_<Calculator>& calculator) {
  calculator
      .def("check", &Check, nb::arg("types"), nb::arg("columns"),
           nb::arg("codes").noconvert(), nb::arg("threads"))
      .def("critical_tolerances", &FindCriticalTolerances, nb::arg("types"),
           nb::arg("columns"), nb::arg("tolerances").noconvert())
      .def("explain_path", &ExplainPath, nb::arg("type"), nb::arg("columns"))
      .def("explain_pair", &ExplainPair, nb::arg("event_and_pmt").noconvert(),
           nb::arg("wavelength"), nb::arg("reflected"));
}

}  // namespace ZARN::Python
