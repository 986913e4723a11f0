#include "lightpath/EventRays.hpp"

#include <algorithm>
#include <array>
#include <cmath>

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

void EventRays::Part::Clear() {
  runs.clear();
  indexes.clear();
}

void EventRays::Part::Append(std::size_t begin, std::size_t end) {
  if (!runs.empty() && runs.back().end == begin) {
    runs.back().end = end;
  } else {
    runs.push_back({begin, end});
  }
}

/// A patch of which all PMTs are in one range is not looked into. The ranges
/// have margins that are wider than the rounding of the cosines.
void EventRays::Sort(const PMTArray::Group& group, const RayTable& table,
                     Sorted& sorted) const {
  for (Part* const part :
       {&sorted.near, &sorted.far, &sorted.empty, &sorted.open}) {
    part->Clear();
  }
  for (const PMTArray::Patch& patch : group.patches) {
    const double x = origin_.x * patch.axis.X() + origin_.y * patch.axis.Y() +
                     origin_.z * patch.axis.Z();
    const double across =
        patch.sine * std::sqrt(std::max((1.0 - x) * (1.0 + x), 0.0));
    const double least = x > -patch.cosine ? x * patch.cosine - across : -1.0;
    const double most = x < patch.cosine ? x * patch.cosine + across : 1.0;
    if (least > table.LeastNear()) {
      sorted.near.Append(patch.begin, patch.end);
    } else if (most < table.MostFar()) {
      sorted.far.Append(patch.begin, patch.end);
    } else if (least > table.LeastEmpty() && most < table.MostEmpty()) {
      sorted.empty.Append(patch.begin, patch.end);
    } else {
      SortPatch(patch, table, sorted);
    }
  }
}

void EventRays::SortPatch(const PMTArray::Patch& patch, const RayTable& table,
                          Sorted& sorted) const {
  std::array<double, PMTArray::kMostInPatch> cosines;
  const std::size_t count = patch.end - patch.begin;
  const double* const x = pmts_.X().data() + patch.begin;
  const double* const y = pmts_.Y().data() + patch.begin;
  const double* const z = pmts_.Z().data() + patch.begin;
  for (std::size_t i = 0; i < count; ++i) {
    cosines[i] = origin_.x * x[i] + origin_.y * y[i] + origin_.z * z[i];
  }
  const auto append = [&](Part& part, const auto& isIn) {
    // Written in any case, so that there is no branch to predict.
    std::array<std::uint32_t, PMTArray::kMostInPatch> found;
    std::size_t end = 0;
    for (std::size_t i = 0; i < count; ++i) {
      found[end] = static_cast<std::uint32_t>(patch.begin + i);
      end += isIn(cosines[i]) ? 1U : 0U;
    }
    part.indexes.insert(part.indexes.end(), found.begin(), found.begin() + end);
    return end;
  };
  const auto isNear = [&](double cosine) { return cosine > table.LeastNear(); };
  const auto isFar = [&](double cosine) { return cosine < table.MostFar(); };
  const auto isEmpty = [&](double cosine) {
    return (cosine > table.LeastEmpty()) & (cosine < table.MostEmpty());
  };
  const std::size_t known = append(sorted.near, isNear) +
                            append(sorted.far, isFar) +
                            append(sorted.empty, isEmpty);
  if (known == count) return;
  append(sorted.open, [&](double cosine) {
    return !isNear(cosine) & !isFar(cosine) & !isEmpty(cosine);
  });
}

EventRays::Block EventRays::BlockOf(std::size_t begin,
                                    std::size_t count) const {
  return {{pmts_.X().data() + begin, pmts_.Y().data() + begin,
           pmts_.Z().data() + begin, pmts_.InverseRadius().data() + begin},
          pmts_.Order().data() + begin,
          count,
          begin,
          nullptr};
}

EventRays::Block EventRays::BlockOf(const std::uint32_t* indexes,
                                    std::size_t count, Copies& copies) const {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t index = indexes[i];
    copies.x.at[i] = pmts_.X()[index];
    copies.y.at[i] = pmts_.Y()[index];
    copies.z.at[i] = pmts_.Z()[index];
    copies.inverseRadius.at[i] = pmts_.InverseRadius()[index];
    copies.numbers.at[i] = pmts_.Order()[index];
  }
  return {{copies.x.at, copies.y.at, copies.z.at, copies.inverseRadius.at},
          copies.numbers.at,
          count,
          0,
          indexes};
}

}  // namespace ZARN::DU
