#include "Foundation/Data/Tmetaclass.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>

namespace {

// "lamp" and "shape" are roots; "spot" is a lamp; "both" is both; "wide" has all four for parents.
struct Lattice
{
  Lattice()
  {
    for (int i = 0; i < 300; ++i)
      between.emplace_back(nullptr, "stranger", 1, nullptr, 0, 0);
    shape = std::make_unique<Tmetaclass>(nullptr, "shape", 12, nullptr, 0, 0);
    pointers[4] = shape.get();
  }

  // The pointers hold their value before the parents are made.
  Tmetaclass* pointers[5] = {&wide, &both, &spot, &lamp, nullptr};
  Tmetaclass** parents = pointers;
  Tmetaclass wide{nullptr, "wide", 100, nullptr, 0, 0, parents + 1, parents + 2, parents + 3, parents + 4};
  Tmetaclass both{nullptr, "both", 30, nullptr, 0, 0, parents + 3, parents + 4};
  Tmetaclass spot{nullptr, "spot", 20, nullptr, 0, 0, parents + 3};
  Tmetaclass lamp{nullptr, "lamp", 8, nullptr, 0, 0};
  std::list<Tmetaclass> between; // ids far apart
  std::unique_ptr<Tmetaclass> shape;
};

TEST(Tmetaclass, KnowsItsKin)
{
  const Lattice lattice;
#if FAILING_MEMORY
  failAllocations(0, INT_MAX); // the first question is answered without a table
  const bool isa = lattice.wide.isa(lattice.shape.get());
  failAllocations(0, 0);
  EXPECT_TRUE(isa);
#endif
  const char* const expected[] = {"wbsls", "bls", "sl", "l", "s"}; // the initials of what each is
  for (int i = 0; i < 5; ++i)
  {
    const Tmetaclass& record = *lattice.pointers[i];
    std::string byRecord, byName;
    for (const Tmetaclass* other : lattice.pointers)
    {
      byRecord.append(other->name(), record.isa(other));
      byName.append(other->name(), record.isa(other->name()));
    }
    EXPECT_EQ(byRecord, expected[i]);
    EXPECT_EQ(byName, expected[i]);
    EXPECT_FALSE(record.isa(&lattice.between.back()) || record.isa("stranger"));
  }
  EXPECT_TRUE(lattice.wide.super(3) == lattice.shape.get() && !lattice.wide.super(4));
  EXPECT_EQ(lattice.both.extraSize(), 10u);
  Tmetaclass copy(lattice.both); // with a table of its own
  EXPECT_TRUE(copy.isa(lattice.shape.get()));
  copy = lattice.spot;
  EXPECT_TRUE(copy.isa(&lattice.lamp) && !copy.isa(lattice.shape.get()));
}

} // namespace
