#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/TiffTable.h"
#include "Foundation/Iff/TiffTagArray.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>
#include <string>

namespace {

TEST(TiffTag, isANumberHoweverItIsGiven)
{
  constexpr char notTerminated[] = {'F', 'O', 'R', '4', 'x'};
  const TiffTag same[] = {0x464F5234,     TiffTag('F', 'O', 'R', '4'),  "FOR4x",      TiffTag(notTerminated),
                          TiffTag::kFOR4, TiffTag(std::string("FOR4")), 0x1464F5234LL};
  for (const TiffTag& each : same)
    EXPECT_EQ(each, same[0]) << each;
  EXPECT_EQ(TiffTag("\xFF\x80"), TiffTag(0xFF800000U));
  EXPECT_TRUE(TiffTag("\xFF") > TiffTag("ZZZZ"));
  EXPECT_EQ(TiffTag(static_cast<const char*>(nullptr)), TiffTag(0));
  EXPECT_EQ(TiffTag::kLIS8 & TiffTag::kGMSK, TiffTag::kLISx);
  std::ostringstream out;
  out << TiffTag::kCAT << TiffTag::kLISx << TiffTag("\x1F~\x7F\\") << TiffTag("\xE9");
  EXPECT_EQ(out.str(), "CAT LIS\\x00\\x1F~\\x7F\\x5C\\xE9\\x00\\x00\\x00");
}

TEST(TiffTagArray, findsAnIndex)
{
  TiffTagArray tags{TiffTag::kNAME, TiffTag::kBODY, TiffTag::kNAME};
  EXPECT_EQ(tags.remove(TiffTag::kNAME), 0);
  EXPECT_TRUE(tags.find("NAME") == 1 && tags.find(TiffTag::kCAT) == -1);
}

TEST(TiffTable, holdsWhatAModelHolds)
{
  char records[8]; // that are only told apart
  std::mt19937 random(92);
  TiffTable table(0, 64), other;
  std::map<TuInt32, Tmetaclass*> model, found;
  for (unsigned step = 0; step < 4000; ++step)
  {
    const TuInt32 key = TuInt32(random() % 40 << (random() % 2 * 20)); // many in one bucket
    Tmetaclass* const value = reinterpret_cast<Tmetaclass*>(&records[random() % 8]);
    const unsigned action = unsigned(random() % (step / 500 % 2 ? 16 : 6)); // filling up and emptying by turns
    if (action <= 1)
      EXPECT_EQ(table.insertUnique(key, value), model.emplace(key, value).second);
    else if (action <= 3)
      table.insertReplace(key, model[key] = value);
    else if (action == 4 && step % 16 == 0)
    {
      for (TiffTable::Iterator at(table); !at.isDone();)
        at.key() % 8 == 3 ? at.removeThenNext() : at.next();
      std::erase_if(model, [](const auto& each) { return each.first % 8 == 3; });
    }
    else
      EXPECT_EQ(table.remove(key), model.erase(key));
    found.clear();
    for (const TiffTable::Entry& each : table)
      found[each.key().value()] = *table.find(each.key());
    ASSERT_TRUE(table.validate() && found == model && table.entryCount() == model.size()) << step;
  }
  const TiffTable::Iterator at(table);
  at.appendAllTo(table); // no change
  for (int i = 0; i < 2; ++i)
    at.appendAllTo(other); // beside what is there
  EXPECT_EQ(other.entryCount(), 2 * model.size());
  other.clearall();
  EXPECT_TRUE(other.entryCount() == 0 && other.bucketCount() > 8);
  other.reset();
  EXPECT_EQ(other.bucketCount(), 8U);
#if FAILING_MEMORY
  failAllocations(0, 1);
  EXPECT_THROW(other.insert(1, nullptr), TmemoryException);
  failAllocations(0, 0);
  EXPECT_FALSE(other.find(1));
#endif
}

} // namespace
