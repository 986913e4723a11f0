#include <cstdint>
#include <vector>

#include "io/LightPathColumns.hpp"
#include "python/module/Arrays.hpp"
#include "python/module/Bindings.hpp"
#include "python/module/Calculator.hpp"
#include "python/module/Interruptible.hpp"

namespace ZARN::Python {

namespace nb = nanobind;

namespace {

/// A light path with its lengths, as an element of a structured array.
struct PathRecord {
  std::int32_t type;
  std::int32_t padding;
  double vectors[8][3];  // in the order of IO::kLightPathVectors
  double lengths[3];     // by eMedium
  double opticalLength;
  double time;
  double angle;
};

void Write(const TVector3& vector, double* to) {
  to[0] = vector.X();
  to[1] = vector.Y();
  to[2] = vector.Z();
}

void Write(const DU::LightPathCalculator& light, PathRecord& record) {
  const DU::LightPath& path = light.GetLightPath();
  record.type = path.LightPathType;
  record.padding = 0;
  for (std::size_t i = 0; i < IO::kLightPathVectors.size(); ++i) {
    Write(path.*IO::kLightPathVectors[i].member, record.vectors[i]);
  }
  for (const DU::eMedium medium :
       {DU::eMedium::kInnerAV, DU::eMedium::kAcrylic, DU::eMedium::kWater}) {
    record.lengths[static_cast<std::size_t>(medium)] = light.GetLength(medium);
  }
  record.opticalLength = light.GetOpticalLength();
  record.time = light.GetTimeOfFlight();
  record.angle = light.GetIncidenceAngle();
}

/// Fill in the light path of every pair, and with reflections that of the
/// reflected light after it.
void CalcLightPaths(const Calculator& calculator,
                    const DenseIn<double, 2>& events,
                    const DenseIn<double, 2>& pmts, double wavelength,
                    bool withReflections,
                    const DenseOut<std::uint8_t, 1>& records) {
  const std::vector<TVector3> from = VectorsIn(events);
  const std::vector<TVector3> to = VectorsIn(pmts);
  const std::size_t paths = withReflections ? 2 : 1;
  if (records.shape(0) !=
      from.size() * to.size() * paths * sizeof(PathRecord)) {
    throw nb::value_error("the records do not have room for the light paths");
  }
  DU::LightPathCalculator light = calculator.LightPaths(wavelength);
  auto* record = reinterpret_cast<PathRecord*>(records.data());
  Interruptible run;
  run.Run([&] {
    for (const TVector3& event : from) {
      for (const TVector3& pmt : to) {
        run.CheckForStop();
        light.CalcByPosition(event, pmt);
        Write(light, *record++);
        if (!withReflections) continue;
        light.CalcReflectionByPosition(event, pmt);
        Write(light, *record++);
      }
    }
  });
}

}  // namespace

void BindLightPaths(nb::class_<Calculator>& calculator) {
  calculator.def("light_paths", &CalcLightPaths, nb::arg("events").noconvert(),
                 nb::arg("pmts").noconvert(), nb::arg("wavelength"),
                 nb::arg("reflections"), nb::arg("records").noconvert());
}

}  // namespace ZARN::Python
