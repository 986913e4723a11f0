#include "benchmarks/PathSet.hpp"

#include <cmath>
#include <utility>

#include "db/DB.hpp"
#include "db/ReadField.hpp"
#include "lightpath/LightPathType.hpp"
#include "tests/support/PathVectors.hpp"

namespace ZARN::Benchmarks {
namespace {

using DU::LightPath;

constexpr std::size_t kCacheLine = 64;

/// How many stretches of @p stretch paths have one that reads the member.
std::size_t StretchesThatRead(TVector3 LightPath::*member,
                              const std::vector<LightPath>& paths,
                              std::size_t stretch) {
  std::array<bool, DU::kNumberOfLightPathTypes> reads = {};
  for (const DU::eLightPathType type : kTypesThatOccur) {
    for (TVector3 LightPath::*const read : MembersRead(type)) {
      reads[static_cast<std::size_t>(type)] |= read == member;
    }
  }
  std::size_t count = 0;
  for (std::size_t begin = 0; begin < paths.size(); begin += stretch) {
    const std::size_t end = std::min(begin + stretch, paths.size());
    bool isRead = false;
    for (std::size_t i = begin; i < end; ++i) {
      isRead |= reads[static_cast<std::size_t>(paths[i].LightPathType)];
    }
    count += isRead ? 1 : 0;
  }
  return count;
}

double ColumnBytesRead(const std::vector<LightPath>& paths) {
  constexpr std::size_t kNumbersInLine = kCacheLine / sizeof(double);
  std::size_t lines = 0;
  for (const Testing::PathVector& vector : Testing::kPathVectors) {
    lines += 3 * StretchesThatRead(vector.inRecord, paths, kNumbersInLine);
  }
  return static_cast<double>(sizeof(int)) +
         static_cast<double>(lines * kCacheLine) /
             static_cast<double>(paths.size());
}

}  // namespace

std::vector<TVector3 LightPath::*> MembersRead(DU::eLightPathType type) {
  switch (type) {
    case DU::kInnerAVToWater:
      return {&LightPath::AVPoint2, &LightPath::FinalDirection};
    case DU::kAVThroughInnerAVToWater:
      return {&LightPath::AVPoint3, &LightPath::FinalDirection};
    case DU::kAVToWater:
      return {&LightPath::AVPoint1, &LightPath::FinalDirection};
    case DU::kWaterThroughInnerAV:
      return {&LightPath::AVPoint1, &LightPath::InitialDirection,
              &LightPath::AVPoint4, &LightPath::FinalDirection};
    case DU::kWaterThroughAV:
      return {&LightPath::AVPoint1, &LightPath::InitialDirection,
              &LightPath::AVPoint2, &LightPath::FinalDirection};
    case DU::kWaterReflection:
      return {&LightPath::AVPoint1, &LightPath::InitialDirection,
              &LightPath::FinalDirection};
    case DU::kWater:
      return {&LightPath::StartPos, &LightPath::EndPos,
              &LightPath::InitialDirection};
    case DU::kUninitialised:
    case DU::kNumberOfLightPathTypes:
      break;
  }
  return {};
}

PathSet::PathSet(std::vector<LightPath> paths) : records_(std::move(paths)) {
  types_.reserve(Size());
  for (const LightPath& path : records_) types_.push_back(path.LightPathType);
  columns_.LightPathType = types_.data();

  // columns_ points into it.
  numbers_.reserve(3 * Testing::kPathVectors.size());
  for (const Testing::PathVector& vector : Testing::kPathVectors) {
    if (StretchesThatRead(vector.inRecord, records_, Size()) == 0) continue;
    const auto columnOf = [&](auto coordinate) {
      std::vector<double> numbers;
      numbers.reserve(Size());
      for (const LightPath& path : records_) {
        numbers.push_back((path.*vector.inRecord.*coordinate)());
      }
      numbers_.push_back(std::move(numbers));
      return numbers_.back().data();
    };
    DU::VectorArrays& arrays = columns_.*vector.inColumns;
    arrays.x = columnOf(&TVector3::X);
    arrays.y = columnOf(&TVector3::Y);
    arrays.z = columnOf(&TVector3::Z);
  }
  columnBytesPerPath_ = ColumnBytesRead(records_);
}

PathSource::PathSource() {
  calculator_.BeginOfRun();
  const std::vector<double> x = ReadNumbers(DB::Get(), "PMT", "positions", "x");
  const std::vector<double> y = ReadNumbers(DB::Get(), "PMT", "positions", "y");
  const std::vector<double> z = ReadNumbers(DB::Get(), "PMT", "positions", "z");
  for (std::size_t i = 0; i < x.size(); ++i) {
    pmts_.emplace_back(x[i], y[i], z[i]);
  }
}

std::vector<LightPath> PathSource::Draw(DU::eLightPathType type,
                                        std::size_t count) {
  std::vector<DU::eLightPathType> types(count, type);
  if (type == kMixed) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t percent = 100 * i / count;
      types[i] = percent < 59   ? DU::kInnerAVToWater
                 : percent < 89 ? DU::kWater
                 : percent < 97 ? DU::kWaterThroughInnerAV
                 : percent < 98 ? DU::kAVThroughInnerAVToWater
                 : percent < 99 ? DU::kAVToWater
                                : DU::kWaterReflection;
    }
    for (std::size_t i = count; i > 1; --i) {
      std::swap(types[i - 1], types[random_.Below(i)]);
    }
  }
  std::vector<LightPath> paths;
  paths.reserve(count);
  for (const DU::eLightPathType t : types) paths.push_back(DrawOne(t));
  return paths;
}

LightPath PathSource::DrawOne(DU::eLightPathType type) {
  do {
    const TVector3 event = EventFor(type);
    const TVector3& pmt = random_.Pick(pmts_);
    if (type == DU::kWaterReflection) {
      calculator_.CalcReflectionByPosition(event, pmt);
    } else {
      calculator_.CalcByPosition(event, pmt);
    }
  } while (calculator_.GetLightPathType() != type);
  return calculator_.GetLightPath();
}

TVector3 PathSource::EventFor(DU::eLightPathType type) {
  const double inner = calculator_.GetMedia().InnerRadius;
  const double outer = calculator_.GetMedia().OuterRadius;
  double low = outer;
  double high = pmts_.front().Mag();
  if (type == DU::kInnerAVToWater) {
    low = 0.0;
    high = inner;
  } else if (type == DU::kAVToWater || type == DU::kAVThroughInnerAVToWater) {
    low = inner;
    high = outer;
  }
  const double radius =
      std::cbrt(random_.Uniform(low * low * low, high * high * high));
  return radius * random_.Direction();
}

}  // namespace ZARN::Benchmarks
