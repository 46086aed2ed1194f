#include "Foundation/Debug/Texception.h"
#include "Foundation/Data/Tmetaclass.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>

namespace {

TEST(Texception, TellsKeepsAndKnowsItsKind)
{
  const struct
  {
    Texception* made;
    const char* name;
    std::string said;
  } kinds[] = {
    {new Texception, "Texception", ""},
    {new TmemoryException, "TmemoryException", ""},
    {new TbadDataCast, "TbadDataCast", ""},
    {new TincompatibleData, "TincompatibleData", ""},
    {new ThandledException(TfailedException(-7)), "ThandledException", ": TfailedException: status -7"},
    {new TfailedException(12), "TfailedException", ": status 12"},
    {new TfileException(EISDIR), "TfileException", ": status " + std::to_string(EISDIR) + " (Is a directory)"},
    {new TunimplementedException("so"), "TunimplementedException", ": so"},
    {new TresourceException("%s %d", "lamp", 3), "TresourceException", ": lamp 3"},
  };
  for (const auto& kind : kinds)
  {
    const Tmetaclass* record = kind.made->typeof();
    EXPECT_EQ(Tmetaclass::findClass(kind.name), record);
    for (const auto& other : kinds)
    {
      const bool related = &other == &kind || &other == kinds;
      EXPECT_EQ(kind.made->cast(other.made->typeof()) != nullptr, related) << kind.name << ' ' << other.name;
      EXPECT_EQ(record->isa(other.made->typeof()), related);
    }
  }
  for (const auto& kind : kinds)
  {
    const Texception* kept = kind.made->cache();
    delete kind.made;
    EXPECT_EQ(kept->cache(), kept);
    EXPECT_EQ(kept->what(), kind.name + kind.said);
  }
}

TEST(Texception, ConstructsWhatHasACreator)
{
  Tmetaclass record(
    nullptr, "Tpatient", 8, [](Tmetaclass* kind) { return (new TfailedException(99))->cast(kind); }, 0, 0,
    &TfailedException::fTypeid);
  EXPECT_TRUE(!Texception::construct(TfailedException::fTypeid) && !TbadDataCast::construct(&record));
  const std::unique_ptr<Texception> made(static_cast<Texception*>(Texception::construct(&record)));
  EXPECT_STREQ(made->what(), "TfailedException: status 99");
}

TEST(Texception, CutsAndCopiesMessages)
{
  for (const unsigned length : {0u, 255u, 256u, 100000u})
    EXPECT_EQ(TresourceException("%s", std::string(length, 'm').c_str()).message(),
              std::string(std::min(length, 255u), 'm'));
  const char* none = nullptr;
  EXPECT_STREQ(TresourceException(none).message(), "");

  TunimplementedException original("shadows"), copy(original), assigned;
  const TunimplementedException& same = assigned = original;
  assigned = same;
  original = TunimplementedException();
  EXPECT_EQ(std::string(copy.message()) + assigned.message(), "shadowsshadows");
#if FAILING_MEMORY
  failAllocations(0, INT_MAX);
  const TunimplementedException poor("x");
  assigned = copy;
  failAllocations(0, 0);
  EXPECT_TRUE(!poor.message() && !assigned.message());
  EXPECT_STREQ(assigned.what(), "TunimplementedException");
#endif
}

TEST(ThandledException, HoldsWhatOutlivesTheThrow)
{
  const auto handled = std::make_unique<ThandledException>(TresourceException("texture"));
  TresourceException("later").cache();
  EXPECT_STREQ(handled->handled()->what(), "TresourceException: later");
  EXPECT_STREQ(handled->what(), "ThandledException: TresourceException: texture");
  const ThandledException outer(static_cast<const Texception&>(*handled));
  const auto* kept = static_cast<const ThandledException*>(outer.cache());
  EXPECT_EQ(kept->handled(), handled->handled()); // not itself, where it is kept
}

} // namespace
