#include <benchmark/benchmark.h>
#include <embree3/rtcore.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <nanoflann.hpp>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "benchmarks/PathSet.hpp"
#include "benchmarks/Ways.hpp"
#include "du/ShadowingCalculator.hpp"
#include "du/fast/ShadowMap.hpp"
#include "du/geometry/PointTree.hpp"

/// The surface scan alone: whether a point lies within reach of any surface
/// point of the hold-down ropes, asked of our index, of a kd-tree and of a ray
/// tracer; and what the ray tracer takes for whole water segments.
namespace ZARN::Benchmarks {
namespace {

constexpr std::size_t kPoints = 2048;
constexpr double kTolerance = 150.0;

struct Vector3 {
  float x;
  float y;
  float z;
};

Vector3 SingleOf(const TVector3& v) {
  return {static_cast<float>(v.X()), static_cast<float>(v.Y()),
          static_cast<float>(v.Z())};
}

/// What is scanned, for what.
struct Scan {
  Scan() {
    DU::ShadowingCalculator calculator;
    calculator.BeginOfRun();
    ropes = calculator.GetAVHDRopes();
    anchors = calculator.GetNCDAnchors();
    supports = calculator.GetSupportRopes();
    radius = calculator.GetOuterAVRadius();
    reach = ropes.AVHDRopeRadius + kTolerance;
    const double lowest = ropes.AVHDRopeEndPoints.front().Z();
    PathSource source;
    while (paths.size() < kPoints) {
      for (const DU::LightPath& path :
           source.Draw(DU::kInnerAVToWater, kPoints)) {
        const bool isScanned = !(lowest > path.AVPoint2.Z());
        if (isScanned && paths.size() < kPoints) paths.push_back(path);
      }
    }
  }

  DU::AVHDRopeModel ropes;
  DU::NCDAnchorModel anchors;
  DU::SupportRopeModel supports;
  double radius = 0.0;  // of the sphere that carries the surface points
  double reach = 0.0;
  std::vector<DU::LightPath> paths;  // that meet the sphere where it is scanned
};

const Scan& TheScan() {
  static const Scan scan;
  return scan;
}

/// One after the other, as the written formula has it.
struct PlainLoop {
  bool operator()(const DU::LightPath& path) const {
    const auto& points = TheScan().ropes.AVHDRopeSurfacePoints;
    for (float k = 0; static_cast<float>(points.size()) > k; k += 1.0F) {
      const TVector3& point = points[static_cast<std::size_t>(k)];
      if (TheScan().reach > (path.AVPoint2 - point).Mag()) return true;
    }
    return false;
  }
};

struct Tree {
  DU::PointTree tree{TheScan().ropes.AVHDRopeSurfacePoints, TheScan().reach};

  bool operator()(const DU::LightPath& path) const {
    return tree.HasPointNear(path.AVPoint2);
  }
};

/// The map of the sphere, which asks the tree where it is unsure.
struct Map {
  DU::PointTree tree{TheScan().ropes.AVHDRopeSurfacePoints, TheScan().reach};
  DU::ShadowMap map{TheScan().radius, MapTests()};

  DU::ShadowMap::Tests MapTests() const {
    DU::ShadowMap::Tests tests = {};
    tests[static_cast<std::size_t>(DU::eMappedTest::kHoldDownSurface)] = &tree;
    return tests;
  }

  bool operator()(const DU::LightPath& path) const {
    const TVector3& point = path.AVPoint2;
    return DU::IsBlocking(DU::ShadowMap::AnswerOf(
                              map.At(point), DU::eMappedTest::kHoldDownSurface),
                          [&] { return tree.HasPointNear(point); });
  }
};

/// A kd-tree of the surface points in double precision.
class KdTree {
 public:
  KdTree() : tree_(3, points_) {}

 protected:
  // Names that the library asks for.
  struct Points {
    std::vector<std::array<double, 3>> all;

    // NOLINTNEXTLINE(readability-identifier-naming)
    std::size_t kdtree_get_point_count() const { return all.size(); }
    // NOLINTNEXTLINE(readability-identifier-naming)
    double kdtree_get_pt(std::size_t i, std::size_t axis) const {
      return all[i][axis];
    }
    template <class Box>
    // NOLINTNEXTLINE(readability-identifier-naming)
    bool kdtree_get_bbox(Box& /*box*/) const {
      return false;
    }
  };
  using Tree = nanoflann::KDTreeSingleIndexAdaptor<
      nanoflann::L2_Simple_Adaptor<double, Points>, Points, 3>;

  static Points PointsOfScan() {
    Points points;
    for (const TVector3& p : TheScan().ropes.AVHDRopeSurfacePoints) {
      points.all.push_back({p.X(), p.Y(), p.Z()});
    }
    return points;
  }

  Points points_ = PointsOfScan();
  Tree tree_;
  double squaredReach_ = TheScan().reach * TheScan().reach;
};

/// All points within reach are collected.
class KdTreeRadius : KdTree {
 public:
  bool operator()(const DU::LightPath& path) {
    const TVector3& p = path.AVPoint2;
    const std::array<double, 3> query = {p.X(), p.Y(), p.Z()};
    nanoflann::SearchParams unsorted;
    unsorted.sorted = false;
    return tree_.radiusSearch(query.data(), squaredReach_, found_, unsorted) >
           0;
  }

 private:
  std::vector<std::pair<std::uint32_t, double>> found_;
};

/// The search ends at the first.
class KdTreeFirst : KdTree {
 public:
  bool operator()(const DU::LightPath& path) const {
    const TVector3& p = path.AVPoint2;
    const std::array<double, 3> query = {p.X(), p.Y(), p.Z()};
    First first{squaredReach_};
    tree_.findNeighbors(first, query.data(), nanoflann::SearchParams());
    return first.isFound;
  }

 private:
  struct First {
    using DistanceType = double;
    double squaredReach;
    bool isFound = false;

    double worstDist() const { return squaredReach; }
    bool full() const { return isFound; }
    bool addPoint(double /*distance*/, std::uint32_t /*index*/) {
      isFound = true;
      return false;
    }
  };
};

template <auto Release>
struct Releaser {
  template <class Object>
  void operator()(Object* object) const {
    Release(object);
  }
};
template <class Handle, auto Release>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Releaser<Release>>;

/// A scene of the ray tracer, in single precision.
class Scene {
 public:
  RTCScene Get() const { return scene_.get(); }
  RTCDevice Device() const { return device_.get(); }

  void Attach(RTCGeometry geometry) {
    rtcCommitGeometry(geometry);
    rtcAttachGeometry(scene_.get(), geometry);
    rtcReleaseGeometry(geometry);  // the scene holds it
  }
  void Commit() { rtcCommitScene(scene_.get()); }

  /// Add spheres of one radius.
  void AddSpheres(const std::vector<TVector3>& centres, double radius) {
    RTCGeometry spheres =
        rtcNewGeometry(Device(), RTC_GEOMETRY_TYPE_SPHERE_POINT);
    FillVertices(spheres, centres, radius);
    Attach(spheres);
  }

  /// Add straight round tubes of one radius along a line through points.
  void AddTube(const std::vector<TVector3>& line, double radius) {
    RTCGeometry tube =
        rtcNewGeometry(Device(), RTC_GEOMETRY_TYPE_ROUND_LINEAR_CURVE);
    FillVertices(tube, line, radius);
    auto* const starts = static_cast<std::uint32_t*>(
        rtcSetNewGeometryBuffer(tube, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT,
                                sizeof(std::uint32_t), line.size() - 1));
    for (std::uint32_t i = 0; i + 1 < line.size(); ++i) starts[i] = i;
    Attach(tube);
  }

 private:
  static void FillVertices(RTCGeometry geometry,
                           const std::vector<TVector3>& points, double radius) {
    struct Vertex {
      Vector3 position;
      float radius;
    };
    auto* vertex = static_cast<Vertex*>(rtcSetNewGeometryBuffer(
        geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT4, sizeof(Vertex),
        points.size()));
    for (const TVector3& p : points) {
      *vertex++ = {SingleOf(p), static_cast<float>(radius)};
    }
  }

  // One thread: the thread sanitizer does not see the locks of the library's.
  Owned<RTCDevice, rtcReleaseDevice> device_{rtcNewDevice("threads=1")};
  Owned<RTCScene, rtcReleaseScene> scene_{rtcNewScene(device_.get())};
};

bool IsOccluded(RTCScene scene, const TVector3& from, const TVector3& along,
                float length) {
  const Vector3 start = SingleOf(from);
  const Vector3 direction = SingleOf(along);
  RTCRay ray = {};
  ray.org_x = start.x;
  ray.org_y = start.y;
  ray.org_z = start.z;
  ray.dir_x = direction.x;
  ray.dir_y = direction.y;
  ray.dir_z = direction.z;
  ray.tfar = length;
  ray.mask = ~0U;
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcOccluded1(scene, &context, &ray);
  return ray.tfar < 0.0F;  // so the library says that something was met
}

/// A query around a point visits what the tree holds near it and ends at the
/// first surface point within reach.
class PointQuery {
 public:
  PointQuery() {
    for (const TVector3& p : TheScan().ropes.AVHDRopeSurfacePoints) {
      points_.push_back(SingleOf(p));
    }
    RTCGeometry geometry =
        rtcNewGeometry(scene_.Device(), RTC_GEOMETRY_TYPE_USER);
    rtcSetGeometryUserPrimitiveCount(geometry,
                                     static_cast<unsigned>(points_.size()));
    rtcSetGeometryUserData(geometry, points_.data());
    rtcSetGeometryBoundsFunction(
        geometry,
        [](const RTCBoundsFunctionArguments* bounds) {
          const Vector3& p = static_cast<const Vector3*>(
              bounds->geometryUserPtr)[bounds->primID];
          *bounds->bounds_o = {p.x, p.y, p.z, 0, p.x, p.y, p.z, 0};
        },
        nullptr);
    scene_.Attach(geometry);
    scene_.Commit();
  }

  bool operator()(const DU::LightPath& path) const {
    const Vector3 place = SingleOf(path.AVPoint2);
    RTCPointQuery query = {};
    query.x = place.x;
    query.y = place.y;
    query.z = place.z;
    query.radius = static_cast<float>(TheScan().reach);
    RTCPointQueryContext context;
    rtcInitPointQueryContext(&context);
    Visit visit{points_.data(), static_cast<float>(TheScan().reach)};
    rtcPointQuery(scene_.Get(), &query, &context, Look, &visit);
    return visit.isFound;
  }

 private:
  struct Visit {
    const Vector3* points;
    float reach;
    bool isFound = false;
  };

  static bool Look(RTCPointQueryFunctionArguments* at) {
    auto& visit = *static_cast<Visit*>(at->userPtr);
    const Vector3& p = visit.points[at->primID];
    const float x = at->query->x - p.x;
    const float y = at->query->y - p.y;
    const float z = at->query->z - p.z;
    if (visit.isFound || !(x * x + y * y + z * z < visit.reach * visit.reach)) {
      return false;
    }
    visit.isFound = true;
    at->query->radius = 0.0F;  // nothing more is visited
    return true;
  }

  std::vector<Vector3> points_;
  Scene scene_;
};

/// A ray straight out from a point of the sphere gets farther from every
/// surface point, so it meets the sphere around one just where it starts inside
/// that: where it is within reach.
class OutwardRay {
 public:
  OutwardRay() {
    scene_.AddSpheres(TheScan().ropes.AVHDRopeSurfacePoints, TheScan().reach);
    scene_.Commit();
  }

  bool operator()(const DU::LightPath& path) const {
    return IsOccluded(scene_.Get(), path.AVPoint2, path.AVPoint2.Unit(),
                      static_cast<float>(3 * TheScan().reach));
  }

 private:
  Scene scene_;
};

/// The last stretch of a path against the ropes (the surface points as spheres,
/// the straight ones as tubes) and the anchors as spheres, all widened by the
/// tolerance: what a general ray tracer takes for such a question. The verdicts
/// are not those of the formulas, which look at points of the path alone and
/// follow the straight ropes by azimuth.
class WaterSegmentRay {
 public:
  WaterSegmentRay() {
    const Scan& scan = TheScan();
    scene_.AddSpheres(scan.ropes.AVHDRopeSurfacePoints, scan.reach);
    for (const TVector3& end : scan.ropes.AVHDRopeEndPoints) {
      scene_.AddTube({end, {end.X(), end.Y(), -end.Z() - kLegLength}},
                     scan.reach);
    }
    for (const TVector3& end : scan.supports.SupportRopePositions) {
      const TVector3 top(end.X(), end.Y(),
                         end.Z() + scan.supports.SupportRopeLength);
      scene_.AddTube({end, top}, scan.supports.SupportRopeRadius + kTolerance);
    }
    scene_.AddSpheres(scan.anchors.NCDAnchorPositions,
                      scan.anchors.NCDAnchorHalfZ + kTolerance);
    scene_.Commit();
  }

  bool operator()(const DU::LightPath& path) const {
    return IsOccluded(scene_.Get(), path.AVPoint2, path.FinalDirection,
                      static_cast<float>((path.EndPos - path.AVPoint2).Mag()));
  }

 private:
  static constexpr double kLegLength = 6138.0;  // mm, as in the tables

  Scene scene_;
};

/// Which verdicts a way must give.
enum class eVerdicts {
  kEqual,    ///< those of the plain loop, or the program ends
  kRounded,  ///< those, but for single precision
  kOther     ///< of another question
};

struct Comparison {
  double shadowed = 0.0;  ///< share of the paths
  int differences = 0;
};

template <class Ask>
Comparison CompareWithPlain(Ask& ask) {
  static const std::vector<bool> expected = [] {
    std::vector<bool> verdicts;
    for (const DU::LightPath& path : TheScan().paths) {
      verdicts.push_back(PlainLoop()(path));
    }
    return verdicts;
  }();
  Comparison found;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const bool isHit = ask(TheScan().paths[i]);
    if (isHit) found.shadowed += 1.0 / static_cast<double>(expected.size());
    if (isHit != expected[i]) ++found.differences;
  }
  return found;
}

template <class Ask>
void AddScan(const std::string& name, eVerdicts verdicts) {
  AddBenchmark(name, [=](benchmark::State& state) {
    static Ask ask;
    static const Comparison found = CompareWithPlain(ask);
    if (verdicts == eVerdicts::kEqual && found.differences > 0) {
      std::cerr << name << ": the verdicts differ: nothing is timed\n";
      std::exit(1);
    }
    const std::vector<DU::LightPath>& paths = TheScan().paths;
    for ([[maybe_unused]] auto _ : state) {
      for (const DU::LightPath& path : paths) {
        benchmark::DoNotOptimize(ask(path));
      }
    }
    state.SetItemsProcessed(state.iterations() *
                            static_cast<std::int64_t>(paths.size()));
    state.counters["paths"] = static_cast<double>(paths.size());
    state.counters["shadowed"] = found.shadowed;
    if (verdicts != eVerdicts::kOther) {
      state.counters["differences"] = found.differences;
    }
  });
}

void AddAll() {
  AddScan<PlainLoop>("scan/plain", eVerdicts::kEqual);
  AddScan<KdTreeRadius>("scan/kd-tree-radius", eVerdicts::kEqual);
  AddScan<KdTreeFirst>("scan/kd-tree-first", eVerdicts::kEqual);
  AddScan<PointQuery>("scan/point-query", eVerdicts::kRounded);
  AddScan<OutwardRay>("scan/outward-ray", eVerdicts::kRounded);
  AddScan<Tree>("scan/tree", eVerdicts::kEqual);
  AddScan<Map>("scan/map", eVerdicts::kEqual);
  AddScan<WaterSegmentRay>("segment/ray", eVerdicts::kOther);
}

}  // namespace
}  // namespace ZARN::Benchmarks

int main(int argc, char** argv) {
  return ZARN::Benchmarks::RunBenchmarks(argc, argv, ZARN::Benchmarks::AddAll);
}
