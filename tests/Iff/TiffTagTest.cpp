#include "Foundation/Iff/TiffTable.h"
#include "Foundation/Iff/TiffTagArray.h"

#include <gtest/gtest.h>

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

TEST(TiffTable, isWalkedByNumbers)
{
  char record; // that is only told apart
  Tmetaclass* const value = reinterpret_cast<Tmetaclass*>(&record);
  TiffTable table, other;
  for (TuInt32 i = 0; i < 40; ++i)
  {
    const TuInt32 key = i << (i % 2 * 20); // half of them in one bucket
    EXPECT_TRUE(table.insertUnique(key, value) && !table.insertUnique(key, nullptr));
    EXPECT_EQ(table.insertReplace(key ^ 1, nullptr), 1);
  }
  for (TiffTable::Iterator at(table); !at.isDone();)
    at.data() ? at.next() : at.removeThenNext();
  TiffTable::Iterator at(table);
  TuInt32 key = 0, sum = 0;
  Tmetaclass* found = nullptr;
  for (; at.getKey(key) && at.getData(found); at.next())
  {
    sum += key;
    EXPECT_TRUE(key == at.key() && found == value && *table.find(key) == value && !table.find(key ^ 1)) << key;
  }
  EXPECT_TRUE(table.entryCount() == 40 && table.validate());
  EXPECT_EQ(sum, 380U + (400U << 20));
  EXPECT_FALSE(at.next() || at.removeThenNext() || at.getKey(key) || at.getData(found));
  for (int i = 0; i < 2; ++i)
    at.appendAllTo(other); // beside what is there
  EXPECT_EQ(other.entryCount(), 80U);
  other.clearall();
  EXPECT_TRUE(other.entryCount() == 0 && other.bucketCount() > 8);
  other.reset();
  EXPECT_EQ(other.bucketCount(), 8U);
}

} // namespace
