#include <memory>

#include "rdf/DataFrame.hpp"
#include "rdf/Inputs.hpp"

namespace ZARN::RDF {

::ROOT::RDF::RNode DefineShadowing(::ROOT::RDF::RNode frame,
                                   const DU::ShadowingCalculator& calculator,
                                   const PathColumns& columns) {
  Inputs inputs(std::move(frame), "DefineShadowing", {columns.code});
  inputs.AddType(columns.type);
  for (const std::string& vector :
       {columns.start, columns.end, columns.initial, columns.final, columns.av1,
        columns.av2, columns.av3, columns.av4}) {
    inputs.AddVector(vector);
  }
  // A frame may copy the function; the calculator need not be copied again.
  auto shadowing = std::make_shared<const DU::ShadowingCalculator>(calculator);
  return inputs.Frame().Define(
      columns.code,
      [shadowing = std::move(shadowing)](
          int type, const Vector& start, const Vector& end,
          const Vector& initial, const Vector& final, const Vector& av1,
          const Vector& av2, const Vector& av3, const Vector& av4) {
        DU::LightPath path;
        path.LightPathType = static_cast<DU::eLightPathType>(type);
        path.StartPos = AsTVector3(start);
        path.EndPos = AsTVector3(end);
        path.InitialDirection = AsTVector3(initial);
        path.FinalDirection = AsTVector3(final);
        path.AVPoint1 = AsTVector3(av1);
        path.AVPoint2 = AsTVector3(av2);
        path.AVPoint3 = AsTVector3(av3);
        path.AVPoint4 = AsTVector3(av4);
        return static_cast<int>(shadowing->FindShadowing(path));
      },
      inputs.Names());
}

::ROOT::RDF::RNode DefineScan(::ROOT::RDF::RNode frame,
                              const DU::ShadowingCalculator& calculator,
                              const DU::LightPathCalculator& light,
                              const PairColumns& columns, DU::eLight kind) {
  light.RequireRun();
  Inputs inputs(std::move(frame), "DefineScan", {columns.code});
  inputs.AddVector(columns.event);
  inputs.AddVector(columns.pmt);
  auto shadowing = std::make_shared<const DU::ShadowingCalculator>(calculator);
  auto paths = std::make_shared<const DU::LightPathCalculator>(light);
  return inputs.Frame().Define(
      columns.code,
      [shadowing = std::move(shadowing), paths = std::move(paths), kind](
          const Vector& event, const Vector& pmt) {
        return static_cast<int>(shadowing->FindVerdict(
            *paths, AsTVector3(event), AsTVector3(pmt), kind));
      },
      inputs.Names());
}

}  // namespace ZARN::RDF
