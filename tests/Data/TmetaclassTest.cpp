#include "Foundation/Data/Tmetaclass.h"

#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

// A lattice: lamp and shape are roots, both derive from them in turn, wide from four at once.
struct Lattice
{
  Tmetaclass* pointers[6];
  // Made before its parents, which it names by pointers that hold their value already.
  Tmetaclass wide{nullptr, "wide", 100, nullptr, 0, 0, pointers + 1, pointers + 2, pointers + 3, pointers + 4};
  Tmetaclass both{nullptr, "both", 30, nullptr, 0, 0, pointers + 3, pointers + 4};
  Tmetaclass spot{nullptr, "spot", 20, nullptr, 0, 0, pointers + 3};
  Tmetaclass lamp{nullptr, "lamp", 8, nullptr, 0x4C414D50, 0};
  std::vector<std::unique_ptr<Tmetaclass>> between = strangers(); // ids far apart
  Tmetaclass shape{nullptr, "shape", 12, nullptr, 0, 0};
  Tmetaclass* const all[5] = {&wide, &both, &spot, &lamp, &shape};

  Lattice()
  {
    for (int i = 0; i < 5; ++i)
      pointers[i] = all[i];
  }

  static std::vector<std::unique_ptr<Tmetaclass>> strangers()
  {
    std::vector<std::unique_ptr<Tmetaclass>> made;
    for (int i = 0; i < 300; ++i)
      made.push_back(std::make_unique<Tmetaclass>(nullptr, "stranger", 1, nullptr, 0, 0));
    return made;
  }
};

// Row is a column.
constexpr bool kIsa[5][5] = {
  {true, true, true, true, true},     {false, true, false, true, true},   {false, false, true, true, false},
  {false, false, false, true, false}, {false, false, false, false, true},
};

void expectKin(const Lattice& lattice)
{
  for (int i = 0; i < 5; ++i)
  {
    const Tmetaclass& record = *lattice.all[i];
    for (int j = 0; j < 5; ++j)
    {
      const Tmetaclass* other = lattice.all[j];
      EXPECT_EQ(record.isa(other), kIsa[i][j]) << record.name() << ' ' << other->name();
      EXPECT_EQ(record.isa(other->name()), kIsa[i][j]) << record.name() << ' ' << other->name();
      EXPECT_EQ(record.isnota(other) || record.isnota(other->name()), !kIsa[i][j]);
      EXPECT_EQ(record.isexactlya(other) && record.isexactlya(other->name()), i == j);
      EXPECT_EQ(record.isnotexactlya(other) || record.isnotexactlya(other->name()), i != j);
    }
    EXPECT_FALSE(record.isa(lattice.between[150].get()) || record.isa("stranger"));
  }
}

TEST(Tmetaclass, KnowsItsKin)
{
  const Lattice lattice;
  expectKin(lattice);
  const Tmetaclass* none = nullptr;
  const char* nameless = nullptr;
  EXPECT_FALSE(lattice.wide.isa(none) || lattice.wide.isa(nameless) || lattice.wide.isa(""));

  EXPECT_EQ(lattice.wide.superCount(), 4u);
  EXPECT_EQ(lattice.wide.super(3), &lattice.shape);
  EXPECT_EQ(lattice.wide.super(4), nullptr);
  EXPECT_EQ(lattice.both.extraSize(), 10u);
  EXPECT_EQ(lattice.lamp.extraSize(), 8u);
  EXPECT_EQ(lattice.lamp.tag(), 0x4C414D50u);
}

TEST(Tmetaclass, CopiesKnowTheSameKin)
{
  const Lattice lattice;
  EXPECT_TRUE(lattice.both.isa(&lattice.lamp));
  Tmetaclass copy(lattice.both); // with a table of its own
  EXPECT_TRUE(copy.isa(&lattice.shape));
  EXPECT_FALSE(copy.isa(&lattice.spot));
  copy = lattice.spot;
  EXPECT_STREQ(copy.name(), "spot");
  EXPECT_TRUE(copy.isa(&lattice.lamp));
  EXPECT_FALSE(copy.isa(&lattice.shape));
}

TEST(Tmetaclass, IsFoundWhileItLives)
{
  EXPECT_EQ(Tmetaclass::findClass("spot"), nullptr);
  auto lattice = std::make_unique<Lattice>();
  {
    const Tmetaclass second(nullptr, "spot", 1, nullptr, 0, 0);
    EXPECT_EQ(Tmetaclass::findClass("spot"), &lattice->spot);
    EXPECT_EQ(Tmetaclass::findClass("spot", &second), &second);
    EXPECT_EQ(Tmetaclass::findClass("spot", &lattice->lamp), &lattice->spot);
    EXPECT_EQ(Tmetaclass::findClass("spot", &lattice->shape), nullptr);
    lattice.reset();
    EXPECT_EQ(Tmetaclass::findClass("spot"), &second);
  }
  EXPECT_EQ(Tmetaclass::findClass("spot"), nullptr);
  EXPECT_EQ(Tmetaclass::findClass(nullptr), nullptr);
}

TEST(Tmetaclass, MakesObjectsByItsCreator)
{
  static Tmetaclass* asked;
  struct Factory : TconstructorClass
  {
    void* create(Tmetaclass* requested) override { return fMade = requested; }
    void* fMade = nullptr;
  } factory;
  const auto create = [](Tmetaclass* requested) -> void* {
    asked = requested;
    return &asked;
  };
  Tmetaclass byFunction(nullptr, "byFunction", 1, create, 0, 0), byObject(nullptr, "byObject", 1, &factory, 0, 0);
  EXPECT_FALSE(byFunction.isAbstract() || byObject.isAbstract());
  EXPECT_EQ(byFunction.construct(&byObject), &asked);
  EXPECT_EQ(asked, &byObject);
  EXPECT_EQ(byObject.construct(&byFunction), &byFunction);
  byFunction.setCreator(&factory);
  EXPECT_EQ(byFunction.construct(&byFunction), &byFunction);
  byFunction.setCreator(nullptr);
  EXPECT_TRUE(byFunction.isAbstract());
  EXPECT_EQ(byFunction.construct(&byFunction), nullptr);
}

#if FAILING_MEMORY
TEST(Tmetaclass, AnswersWithoutMemory)
{
  auto lattice = std::make_unique<Lattice>();
  failAllocations(0, INT_MAX);
  expectKin(*lattice);
  failAllocations(0, 0);
  expectKin(*lattice);
  lattice.reset();

  // A registry that cannot grow does not know the record, which is good for the rest.
  std::vector<std::unique_ptr<Tmetaclass>> many;
  alignas(Tmetaclass) unsigned char storage[sizeof(Tmetaclass)];
  bool known = true;
  while (known)
  {
    failAllocations(0, INT_MAX);
    auto* last = new (storage) Tmetaclass(nullptr, "last", 1, nullptr, 0, 0);
    failAllocations(0, 0);
    known = Tmetaclass::findClass("last") == last;
    EXPECT_TRUE(last->isa("last"));
    last->~Tmetaclass();
    many.push_back(std::make_unique<Tmetaclass>(nullptr, "one of many", 1, nullptr, 0, 0));
  }
}
#endif

} // namespace
