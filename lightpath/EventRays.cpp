#include "lightpath/EventRays.hpp"

#include <algorithm>
#include <array>

namespace ZARN::DU {

EventRays::EventRays(const ConcentricMedia& media, const TVector3& eventPos,
                     const PMTArray& pmts)
    : media_(media),
      eventPos_(eventPos),
      eventRadius_(eventPos.Mag()),
      pmts_(pmts) {
  constexpr double kAtCentre = 1e-100;
  if (eventRadius_ < kAtCentre) return;
  // The same unit vector as that of a single path.
  const TVector3 direction = eventPos * (1.0 / eventRadius_);
  origin_ = {direction.X(), direction.Y(), direction.Z()};
}

bool EventRays::IsWorthATable(const PMTArray::Group& group) {
  constexpr std::size_t kFewest = 16;
  return group.end - group.begin >= kFewest;
}

void EventRays::Sort(const PMTArray::Group& group, const RayTable& table,
                     Sorted& sorted) const {
  const std::size_t size = group.end - group.begin;
  sorted.near.resize(size);
  sorted.far.resize(size);
  sorted.empty.clear();
  sorted.open.clear();
  std::size_t nears = 0;
  std::size_t fars = 0;
  const double* const pmtX = pmts_.X().data() + group.begin;
  const double* const pmtY = pmts_.Y().data() + group.begin;
  const double* const pmtZ = pmts_.Z().data() + group.begin;
  const RayOrigin origin = origin_;
  std::array<double, kRayBlock> cosines;
  std::array<std::uint32_t, kRayBlock> others;
  for (std::size_t begin = 0; begin < size; begin += kRayBlock) {
    const std::size_t count = std::min(kRayBlock, size - begin);
    for (std::size_t i = 0; i < count; ++i) {
      cosines[i] = origin.x * pmtX[begin + i] + origin.y * pmtY[begin + i] +
                   origin.z * pmtZ[begin + i];
    }
    // Written in any case, so that there is no branch to predict.
    std::size_t rest = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const bool isNear = cosines[i] > table.LeastNear();
      const bool isFar = cosines[i] < table.MostFar();
      const auto index = static_cast<std::uint32_t>(group.begin + begin + i);
      sorted.near[nears] = index;
      nears += isNear ? 1U : 0U;
      sorted.far[fars] = index;
      fars += isFar ? 1U : 0U;
      others[rest] = index;
      rest += isNear || isFar ? 0U : 1U;
    }
    for (std::size_t i = 0; i < rest; ++i) {
      const double x = cosines[others[i] - group.begin - begin];
      const bool isEmpty = x > table.LeastEmpty() && x < table.MostEmpty();
      (isEmpty ? sorted.empty : sorted.open).push_back(others[i]);
    }
  }
  sorted.near.resize(nears);
  sorted.far.resize(fars);
}

void EventRays::Load(const std::uint32_t* indexes, std::size_t count,
                     RayBlock& block) const {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t index = indexes[i];
    block.pmtX.at[i] = pmts_.X()[index];
    block.pmtY.at[i] = pmts_.Y()[index];
    block.pmtZ.at[i] = pmts_.Z()[index];
    block.inverseRadius.at[i] = pmts_.InverseRadius()[index];
  }
}

}  // namespace ZARN::DU
