#include "Foundation/Debug/Texception.h"

#include "Foundation/Data/Tmetaclass.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

struct Kind
{
  std::unique_ptr<Texception> made;
  Tmetaclass* record;
  const char* name;
  unsigned size; // as recorded
  const char* what;
};

std::vector<Kind> kinds()
{
  std::vector<Kind> all;
  const auto add = [&all](auto* made, unsigned size, const char* name, const char* what) {
    all.push_back({std::unique_ptr<Texception>(made), made->fTypeid, name, size, what});
  };
  add(new Texception, 4, "Texception", "Texception");
  add(new TmemoryException, 4, "TmemoryException", "TmemoryException");
  add(new TbadDataCast, 4, "TbadDataCast", "TbadDataCast");
  add(new TincompatibleData, 4, "TincompatibleData", "TincompatibleData");
  add(new ThandledException(TfailedException(-7)), 8, "ThandledException",
      "ThandledException: TfailedException: status -7");
  add(new TfailedException(12), 8, "TfailedException", "TfailedException: status 12");
  add(new TunimplementedException("so"), 8, "TunimplementedException", "TunimplementedException: so");
  add(new TresourceException("%s %d", "lamp", 3), 260, "TresourceException", "TresourceException: lamp 3");
  return all;
}

TEST(Texception, TellsItsClassAndMessage)
{
  for (const Kind& kind : kinds())
  {
    EXPECT_STREQ(kind.made->what(), kind.what);
    EXPECT_EQ(kind.made->typeof(), kind.record);
    EXPECT_STREQ(kind.record->name(), kind.name);
    EXPECT_EQ(kind.record->size(), kind.size);
    EXPECT_EQ(Tmetaclass::findClass(kind.name), kind.record);
    EXPECT_TRUE(kind.record->isAbstract());
    EXPECT_EQ(kind.record->superCount(), kind.record == Texception::fTypeid ? 0u : 1u);
    for (const Kind& other : kinds())
    {
      const bool related = other.record == kind.record || other.record == Texception::fTypeid;
      EXPECT_EQ(kind.made->cast(other.record) != nullptr, related) << kind.name << ' ' << other.name;
      EXPECT_EQ(kind.record->isa(other.record), related);
    }
    EXPECT_EQ(kind.made->cast(nullptr), nullptr);
  }
  Tmetaclass* ofFiles = Tmetaclass::findClass("TfileException");
  ASSERT_NE(ofFiles, nullptr);
  EXPECT_TRUE(ofFiles->size() == 8 && ofFiles->super(0) == Texception::fTypeid);
}

TEST(Texception, KeepsOneInstanceOfEachClass)
{
  for (Kind& kind : kinds())
  {
    Texception* kept = kind.made->cache();
    EXPECT_EQ(kept->typeof(), kind.record);
    EXPECT_NE(kept, kind.made.get());
    kind.made.reset();
    EXPECT_STREQ(kept->what(), kind.what);
    EXPECT_EQ(kept->cache(), kept);
    EXPECT_STREQ(kept->what(), kind.what);
  }
  const Texception* kept = TfailedException(1).cache();
  EXPECT_EQ(TfailedException(2).cache(), kept);
  EXPECT_EQ(static_cast<const TfailedException*>(kept)->code(), 2);
}

TEST(Texception, ConstructsWhatHasACreator)
{
  struct Tpatient : TfailedException
  {
    Tpatient()
      : TfailedException(99)
    {
    }
    static void* create(Tmetaclass* requested) { return (new Tpatient)->cast(requested); }
  };
  Tmetaclass record(nullptr, "Tpatient", sizeof(Tpatient), Tpatient::create, 0, 0, &TfailedException::fTypeid);
  EXPECT_EQ(Texception::construct(nullptr), nullptr);
  EXPECT_EQ(Texception::construct(TfailedException::fTypeid), nullptr); // no creator
  EXPECT_EQ(TbadDataCast::construct(&record), nullptr);                 // no kin
  const std::unique_ptr<Texception> made(static_cast<Texception*>(Texception::construct(&record)));
  ASSERT_NE(made, nullptr);
  EXPECT_STREQ(made->what(), "TfailedException: status 99");
}

TEST(Texception, CutsLongMessages)
{
  for (const int length : {0, 1, 254, 255, 256, 100000})
  {
    const TresourceException exception("%s", std::string(std::size_t(length), 'm').c_str());
    EXPECT_EQ(std::string(exception.message()), std::string(std::size_t(std::min(length, 255)), 'm'));
  }
  const char* none = nullptr;
  EXPECT_STREQ(TresourceException(none).message(), "");
}

TEST(ThandledException, HoldsWhatOutlivesTheThrow)
{
  std::unique_ptr<ThandledException> handled;
  try
  {
    throw TresourceException("texture %d", 5);
  }
  catch (const Texception& exception)
  {
    handled = std::make_unique<ThandledException>(exception);
  }
  EXPECT_STREQ(handled->handled()->what(), "TresourceException: texture 5");

  // Held by another one it would be kept where that is kept, and hold itself.
  const ThandledException outer(static_cast<const Texception&>(*handled));
  EXPECT_STREQ(outer.handled()->what(), "TresourceException: texture 5");
  EXPECT_STREQ(outer.cache()->what(), handled->what());
  EXPECT_NE(static_cast<const ThandledException*>(outer.cache())->handled(), outer.cache());

  TresourceException("later").cache();
  EXPECT_STREQ(handled->what(), "ThandledException: TresourceException: texture 5");
}

TEST(TunimplementedException, CopiesItsMessage)
{
  char text[] = "shadows";
  TunimplementedException original(text);
  text[0] = 'S';
  TunimplementedException copy(original), assigned;
  EXPECT_EQ(assigned.message(), nullptr);
  assigned = original;
  const TunimplementedException& self = assigned;
  assigned = self;
  original = TunimplementedException();
  EXPECT_EQ(original.message(), nullptr);
  EXPECT_STREQ(copy.message(), "shadows");
  EXPECT_STREQ(assigned.message(), "shadows");
#if FAILING_MEMORY
  failAllocations(0, INT_MAX);
  const TunimplementedException poor("x"), poorCopy(copy);
  assigned = copy;
  failAllocations(0, 0);
  EXPECT_EQ(poor.message(), nullptr);
  EXPECT_EQ(poorCopy.message(), nullptr);
  EXPECT_EQ(assigned.message(), nullptr);
  EXPECT_STREQ(assigned.what(), "TunimplementedException");
#endif
}

} // namespace
