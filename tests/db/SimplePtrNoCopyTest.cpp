#include "db/SimplePtrNoCopy.hpp"

#include <gtest/gtest.h>

#include "tests/support/TextOf.hpp"

namespace ZARN {
namespace {

using Testing::TextOf;

/// Counts its living instances.
struct Counted {
  explicit Counted(int* counter) : alive(counter) { ++*alive; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --*alive; }
  int* alive;
};

TEST(SimplePtrNoCopy, DeletesTheObjectWithTheLastHandle) {
  int alive = 0;
  {
    simple_ptr_nocopy<Counted> first(new Counted(&alive));
    {
      simple_ptr_nocopy<Counted> second;
      second = first;
      EXPECT_EQ(second->alive, &alive);
    }
    EXPECT_EQ(alive, 1);
    simple_ptr_nocopy<Counted> third(new Counted(&alive));
    EXPECT_EQ(alive, 2);
    third = first;
    EXPECT_EQ(alive, 1);
    first = simple_ptr_nocopy<Counted>();
    EXPECT_EQ(alive, 1);
  }
  EXPECT_EQ(alive, 0);
}

TEST(SimplePtrNoCopy, ThrowsIfAnEmptyHandleIsDereferenced) {
  const simple_ptr_nocopy<Counted> empty;
  EXPECT_EQ(TextOf<null_dereference>([&] { (void)empty->alive; }),
            "null pointer dereferenced in simple_ptr_nocopy::operator->");
}

}  // namespace
}  // namespace ZARN
