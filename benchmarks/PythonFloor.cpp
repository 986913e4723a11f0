// What benchmarks/python_benchmark.py compares the Python package with: the
// same work by the library alone, called in the same process on the same
// arrays.

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

#include "db/JsonTables.hpp"
#include "du/ShadowingCalculator.hpp"
#include "lightpath/LightPathCalculator.hpp"
#include "scan/RowScan.hpp"

namespace {

using namespace ZARN;

struct Detector {
  explicit Detector(const char* source) {
    TableSet tables;
    LoadJsonTables(tables, source);
    shadowing.BeginOfRun(tables);
    lightPath.BeginOfRun(tables);
    shadowing.MakeLayers();
  }

  DU::ShadowingCalculator shadowing;
  DU::LightPathCalculator lightPath;
};

const Detector& DetectorAt(const char* source) {
  static const Detector detector(source);
  return detector;
}

template <class Work>
double SecondsOf(const Work& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin)
      .count();
}

std::vector<TVector3> VectorsIn(const double* rows, std::size_t count) {
  std::vector<TVector3> vectors;
  for (std::size_t i = 0; i < count; ++i) {
    vectors.emplace_back(rows[3 * i], rows[3 * i + 1], rows[3 * i + 2]);
  }
  return vectors;
}

}  // namespace

extern "C" {

/// Judge paths in columns; @p columns are those of zarn, without the type.
///
/// @return seconds
double zarn_check(const char* source, const int* types,
                  const double* const* columns, std::size_t count,
                  std::uint8_t* codes) {
  constexpr std::array kVectors = {&DU::LightPathArrays::StartPos,
                                   &DU::LightPathArrays::EndPos,
                                   &DU::LightPathArrays::InitialDirection,
                                   &DU::LightPathArrays::FinalDirection,
                                   &DU::LightPathArrays::AVPoint1,
                                   &DU::LightPathArrays::AVPoint2,
                                   &DU::LightPathArrays::AVPoint3,
                                   &DU::LightPathArrays::AVPoint4};
  DU::LightPathArrays paths;
  paths.LightPathType = types;
  for (std::size_t i = 0; i < kVectors.size(); ++i) {
    paths.*
        kVectors[i] = {columns[3 * i], columns[3 * i + 1], columns[3 * i + 2]};
  }
  const DU::ShadowingCalculator& shadowing = DetectorAt(source).shadowing;
  return SecondsOf([&] {
    shadowing.FindShadowing(paths, count,
                            reinterpret_cast<DU::eShadowingComponent*>(codes));
  });
}

/// Scan events and PMTs on one thread. @return seconds
double zarn_scan(const char* source, const double* events,
                 std::size_t numberOfEvents, const double* pmts,
                 std::size_t numberOfPMTs, std::uint8_t* codes) {
  const Detector& detector = DetectorAt(source);
  return SecondsOf([&] {
    Scan::RowScan scan(detector.shadowing, detector.lightPath,
                       DU::PMTArray(VectorsIn(pmts, numberOfPMTs)), {});
    scan.Run(VectorsIn(events, numberOfEvents),
             [&](const Scan::RowBlock& block) {
               for (const DU::eVerdict verdict : block.direct) {
                 *codes++ = static_cast<std::uint8_t>(verdict);
               }
             });
  });
}

}  // extern "C"
