#include "app/ExplainCommand.hpp"

#include <memory>
#include <optional>
#include <string>

#include "app/CommandLine.hpp"
#include "app/ExplainOptions.hpp"
#include "app/FindPosition.hpp"
#include "app/PrintText.hpp"
#include "du/ShadowingCalculator.hpp"
#include "io/ExplanationText.hpp"
#include "io/PathSource.hpp"

namespace ZARN::App {
namespace {

/// Why there is no path between two positions.
DU::eVerdict WhyNoPath(const DU::ShadowingCalculator& shadowing,
                       const DU::LightPathCalculator& light,
                       const TVector3& from, const TVector3& to) {
  const DU::eVerdict direct = shadowing.FindVerdict(light, from, to);
  return DU::HasPath(direct) ? DU::eVerdict::kNoReflectedPath : direct;
}

void Explain(const ExplainOptions& options) {
  LoadTables(options.run);
  DU::ShadowingCalculator shadowing;
  BeginRun(options.run, shadowing);
  DU::LightPathCalculator light;
  light.SetWavelength(options.wavelength);
  if (options.paths.has_value()) {
    BeginRunIfThereAreMedia(options.run, light);
    light.SetLightPath(IO::OpenPaths(*options.paths, options.Names())
                           ->ReadRow(*options.row - 1));
  } else {
    BeginRun(options.run, light);
    const bool hasNames = options.event.has_value();
    const TVector3 from = hasNames
                              ? FindPosition(*options.events, options.Names(),
                                             "event", *options.event)
                                    .position
                              : *options.at;
    const TVector3 to = hasNames ? FindPosition(*options.pmts, options.Names(),
                                                "pmt", *options.pmt)
                                       .position
                                 : *options.to;
    if (options.isReflected) {
      light.CalcReflectionByPosition(from, to);
    } else {
      light.CalcByPosition(from, to);
    }
    if (!light.HasPath()) {
      const DU::eVerdict why = WhyNoPath(shadowing, light, from, to);
      PrintText(options.writesJson ? IO::NoPathJson(why) : IO::NoPathText(why));
      return;
    }
  }
  const DU::ShadowingExplanation explanation =
      shadowing.Explain(light.GetLightPath());
  PrintText(options.writesJson ? IO::ExplanationJson(light, explanation)
                               : IO::ExplanationText(light, explanation));
}

}  // namespace

void AddExplainCommand(CLI::App& app) {
  const auto options = std::make_shared<ExplainOptions>();
  CLI::App& command =
      AddCommand(app, "explain",
                 "Tell how every component judges one light path", [options] {
                   RequireConsistent(*options);
                   Explain(*options);
                 });
  AddExplainOptions(command, *options);
}

}  // namespace ZARN::App
