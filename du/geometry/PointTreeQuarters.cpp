#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "du/geometry/PointTree.hpp"

namespace ZARN::DU {
namespace {

using Four = PointBlocks::FourInSingle;
using FourBits [[gnu::vector_size(sizeof(Four))]] = std::int32_t;

Four All(double value) { return Four{} + static_cast<float>(value); }

[[gnu::always_inline]] inline Four Abs(Four v) {
  constexpr std::int32_t kAllButSign = 0x7FFFFFFF;
  return reinterpret_cast<Four>(reinterpret_cast<FourBits>(v) & kAllButSign);
}

[[gnu::always_inline]] inline Four Min(Four a, Four b) { return a < b ? a : b; }

/// The least value of a, of b, of c and of d.
[[gnu::always_inline]] inline Four LeastOfEach(const std::array<Four, 4>& of) {
  const auto& [a, b, c, d] = of;
  const Four ab = Min(__builtin_shufflevector(a, b, 0, 4, 1, 5),
                      __builtin_shufflevector(a, b, 2, 6, 3, 7));
  const Four cd = Min(__builtin_shufflevector(c, d, 0, 4, 1, 5),
                      __builtin_shufflevector(c, d, 2, 6, 3, 7));
  return Min(__builtin_shufflevector(ab, cd, 0, 1, 4, 5),
             __builtin_shufflevector(ab, cd, 2, 3, 6, 7));
}

/// Bound on the error of a squared distance below in single precision, as a
/// share of the square of S = |v| + |a| + |b| + 2 |c| (names as in
/// JudgingQuarters). With u = 2^-24: a product of v and an edge has 5 roundings
/// (both factors, their product, two sums), and so has v^2; together they are
/// 5 u S^2, their sums and the constants add 10 u S^2, which makes 2^-20 S^2.
///
/// Where this can matter, S is below 2 (limit + 5 (|a| + |b| + |c|)): any point
/// with a larger S is so far away that both bounds are above the square of the
/// limit. That makes 2^-18 of the square of the bracket; this is twice as much.
constexpr double kSingleError = 0x1p-17;

/// The same in double precision, for nodes.
constexpr double kDoubleError = 0x1p-46;

/// Nodes with a smaller share of the radius of a quarter are not divided.
constexpr double kSmallNode = 0.5;

/// No squared distance of a point in the tree is as large.
constexpr double kFar2 = 1e30;

}  // namespace

/// Judges for the quarters of one box.
///
/// Let v be the vector from a point of the list to the middle of the box, and
/// a, b, c half its edges. From the middle of a quarter, which is seen along
/// m = v +- a/2 +- b/2, its places are at w = +- a/2 +- b/2 +- c and between.
/// So the squared distance (m + w)^2 is
///
///     at least   m^2 - |m a| - |m b| - 2 |m c|
///     at most    m^2 + |m a| + |m b| + 2 |m c| + the largest w^2
///
/// where m^2 = v^2 +- v a +- v b + (+- a +- b)^2 / 4, so that all quarters need
/// only four products of v.
class PointTree::JudgingQuarters {
 public:
  JudgingQuarters(const PointTree& tree, const QuarteredBox& box,
                  OfQuarters<Items>& open)
      : tree_(tree),
        firstBlock_(static_cast<std::uint32_t>(tree.nodes_.size())),
        box_(box),
        open_(open) {
    const auto& [a, b, c] = box.edges;
    const double aa = Squared(a);
    const double bb = Squared(b);
    const double cc = Squared(c);
    const double ab = Dot(a, b);
    size_ = std::sqrt(aa) + std::sqrt(bb) + std::sqrt(cc);
    // |m c| exceeds |v c| by at most half of this.
    const double lean = std::abs(Dot(a, c)) + std::abs(Dot(b, c));
    const double farthest2 = (aa + bb) / 4 + std::abs(ab) / 2 + cc + lean;
    const Limits limits = tree.LimitsWith(box.margin);
    outer_ = limits.outer;
    // A single point can block quarters that are not larger than its reach.
    largestWhole_ = box.quarterRadius > limits.inner
                        ? kSmallNode * box.quarterRadius
                        : -1.0;
    const double outer2 = outer_ * outer_ + Slack(outer_, kSingleError) + lean;
    outer2_ = static_cast<float>(std::min(outer2, kFar2));
    inner2_ = static_cast<float>(limits.inner * limits.inner - farthest2 -
                                 Slack(limits.inner, kSingleError) - lean);
    a_ = InSingle(a);
    b_ = InSingle(b);
    twoC_ = InSingle(Scaled(c, 2.0));
    sum2_ = All((aa + bb) / 4 + ab / 2);
    difference2_ = All((aa + bb) / 4 - ab / 2);
    aSum_ = All((aa + ab) / 2);
    aDifference_ = All((aa - ab) / 2);
    bSum_ = All((bb + ab) / 2);
    bDifference_ = All((bb - ab) / 2);
    nearest2_ = All(kFar2);
  }

  OfQuarters<eAnswer> Judge(const Items& items) {
    MakeRoomFor(items.size());
    for (std::size_t i = 0; i < items.size();) {
      if (items[i] < firstBlock_) {
        Divide(items[i++]);
        MakeRoomFor(items.size() - i);
      } else {
        i = TakeBlocks(items, i);
      }
    }
    OfQuarters<eAnswer> answers;
    for (std::size_t i = 0; i < answers.size(); ++i) {
      answers[i] = AnswerOf(nearest2_[i] < inner2_, counts_[i] == 0);
      open_[i].resize(counts_[i]);
    }
    return answers;
  }

 private:
  /// One vector, four times in single precision.
  struct FourVectors {
    Four x;
    Four y;
    Four z;
  };
  static FourVectors InSingle(const Point& p) {
    return {All(p.x), All(p.y), All(p.z)};
  }
  [[gnu::always_inline]] static Four Product(const PointBlocks::Offsets& v,
                                             const FourVectors& edge) {
    return v.x * edge.x + v.y * edge.y + v.z * edge.z;
  }

  double Slack(double limit, double error) const {
    const double share = limit + 5.0 * size_;
    return error * share * share;
  }

  void MakeRoomFor(std::size_t items) {
    for (std::size_t i = 0; i < open_.size(); ++i) {
      const std::size_t size = counts_[i] + items;
      if (open_[i].size() < size) open_[i].resize(size);
    }
  }

  OfQuarters<std::uint32_t*> Rooms() {
    return {open_[0].data(), open_[1].data(), open_[2].data(), open_[3].data()};
  }

  /// Without a branch: a processor predicts it badly, and most of the time of
  /// making a map is spent here.
  [[gnu::always_inline]] void Take(std::uint32_t item,
                                   const OfQuarters<std::uint32_t*>& rooms,
                                   OfQuarters<std::uint32_t>& counts,
                                   Four& nearest2) const {
    const auto v = tree_.blocks_.OffsetsTo(box_.middle, item - firstBlock_);
    const Four v2 = v.x * v.x + v.y * v.y + v.z * v.z;
    const Four a = Product(v, a_);
    const Four b = Product(v, b_);
    const Four c = Abs(Product(v, twoC_));
    const Four sum2 = v2 + sum2_;
    const Four difference2 = v2 + difference2_;
    const std::array<Four, 4> middles = {sum2 - (a + b), difference2 + (a - b),
                                         difference2 - (a - b), sum2 + (a + b)};
    const std::array<Four, 4> widths = {
        Abs(a - aSum_) + Abs(b - bSum_) + c,
        Abs(a + aDifference_) + Abs(b - bDifference_) + c,
        Abs(a - aDifference_) + Abs(b + bDifference_) + c,
        Abs(a + aSum_) + Abs(b + bSum_) + c};
    const Four least2 =
        LeastOfEach({middles[0] - widths[0], middles[1] - widths[1],
                     middles[2] - widths[2], middles[3] - widths[3]});
    const Four most2 =
        LeastOfEach({middles[0] + widths[0], middles[1] + widths[1],
                     middles[2] + widths[2], middles[3] + widths[3]});
    nearest2 = Min(nearest2, most2);
    for (std::size_t i = 0; i < rooms.size(); ++i) {
      rooms[i][counts[i]] = item;
      counts[i] += least2[i] < outer2_ ? 1U : 0U;
    }
  }

  /// Take the blocks from position @p i up to the next node.
  ///
  /// @return the position of that node
  std::size_t TakeBlocks(const Items& items, std::size_t i) {
    const auto rooms = Rooms();
    // Copies, which writing items cannot change.
    auto counts = counts_;
    Four nearest2 = nearest2_;
    for (; i < items.size() && items[i] >= firstBlock_; ++i) {
      Take(items[i], rooms, counts, nearest2);
    }
    counts_ = counts;
    nearest2_ = nearest2;
    return i;
  }

  /// Take a node, or divide it.
  void Divide(std::uint32_t number) {
    const Node& node = tree_.nodes_[number];
    const Point v = box_.middle - node.Middle();
    double width = 0.0;
    for (const Point& edge : box_.edges) width += std::abs(Dot(v, edge));
    const double far = outer_ + node.Radius();
    if (!(Squared(v) - 2.0 * width < far * far + Slack(far, kDoubleError))) {
      return;
    }
    if (node.Radius() <= largestWhole_) {
      MakeRoomFor(1);
      for (std::size_t i = 0; i < open_.size(); ++i) {
        open_[i][counts_[i]++] = number;
      }
      return;
    }
    if (number < tree_.firstLeaf_) {
      Divide(2 * number);
      Divide(2 * number + 1);
      return;
    }
    const Entries leaf = tree_.EntriesOf(number);
    MakeRoomFor(leaf.end - leaf.begin);
    const auto rooms = Rooms();
    for (std::uint32_t i = leaf.begin; i < leaf.end; ++i) {
      Take(firstBlock_ + i, rooms, counts_, nearest2_);
    }
  }

  const PointTree& tree_;
  std::uint32_t firstBlock_;  // its number as an item
  const QuarteredBox& box_;
  OfQuarters<Items>& open_;
  double size_;          // |a| + |b| + |c|
  double outer_;         // a node farther away is clear
  double largestWhole_;  // radius of a node that is not divided
  float outer2_;  // a point is clear if its least squared distance is this
  float inner2_;  // a point blocks if its largest, without w^2, is below this
  FourVectors a_;
  FourVectors b_;
  FourVectors twoC_;
  Four sum2_;         // (a + b)^2 / 4
  Four difference2_;  // (a - b)^2 / 4
  Four aSum_;         // a (a + b) / 2, and so on
  Four aDifference_;
  Four bSum_;
  Four bDifference_;
  // Found so far, for each quarter: the number of open items, and the squared
  // distance of the point that is nearest from everywhere.
  OfQuarters<std::uint32_t> counts_ = {};
  Four nearest2_;
};

PointTree::OfQuarters<eAnswer> PointTree::JudgeQuarters(
    const QuarteredBox& box, const Items& items,
    OfQuarters<Items>& open) const {
  OfQuarters<eAnswer> answers = {};
  if (items.empty()) return answers;
  if (nodes_.empty()) {
    open.fill(items);
    answers.fill(eAnswer::kUnsure);
    return answers;
  }
  return JudgingQuarters(*this, box, open).Judge(items);
}

}  // namespace ZARN::DU
