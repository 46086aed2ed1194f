#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/FL.h"
#include "Foundation/Iff/TiffTable.h"
#include "Foundation/Iff/TiffTagArray.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>

namespace {

TEST(TiffTag, isANumberHoweverItIsGiven)
{
  constexpr char notTerminated[] = {'F', 'O', 'R', '4', 'x'};
  const TiffTag same[] = {0x464F5234,     TiffTag('F', 'O', 'R', '4'),  "FOR4",       "FOR4x", TiffTag(notTerminated),
                          TiffTag::kFOR4, TiffTag(std::string("FOR4")), 0x1464F5234LL};
  for (const TiffTag& each : same)
    EXPECT_EQ(each, same[0]) << each;
  EXPECT_EQ(std::unordered_set<TiffTag>(std::begin(same), std::end(same)).size(), 1U);
  EXPECT_EQ(same[0].valueTchar().asC(), std::string("FOR4"));
  EXPECT_EQ(TiffTag("\xFF\x80"), TiffTag(0xFF800000U));
  EXPECT_TRUE(TiffTag("\xFF") > TiffTag("ZZZZ") && TiffTag("FOR4") < TiffTag::kFORM);
  EXPECT_EQ(TiffTag(static_cast<const char*>(nullptr)), TiffTag(0));

  static_assert(TiffTag("CAT ") == TiffTag::kCAT && TiffTag::kCPRT.value() == 0x28632920 && TiffTag::kZERO == 0);
  std::ostringstream out;
  out << TiffTag::kCAT << TiffTag::kLISx << TiffTag("\x1F~\x7F\\") << TiffTag("\xE9");
  EXPECT_EQ(out.str(), "CAT LIS\\x00\\x1F~\\x7F\\x5C\\xE9\\x00\\x00\\x00");
}

TEST(TiffTag, maskGivesTheFamilyThatTheEngineSees)
{
  const struct
  {
    TiffTag family;
    unsigned flag;
    TiffTag members[3];
  } families[] = {
    {TiffTag::kFORx, kFLidForm, {TiffTag::kFORM, TiffTag::kFOR4, TiffTag::kFOR8}},
    {TiffTag::kCATx, kFLidCat, {TiffTag::kCAT, TiffTag::kCAT4, TiffTag::kCAT8}},
    {TiffTag::kLISx, kFLidList, {TiffTag::kLIST, TiffTag::kLIS4, TiffTag::kLIS8}},
    {TiffTag::kPROx, kFLidProp, {TiffTag::kPROP, TiffTag::kPRO4, TiffTag::kPRO8}},
  };
  for (const auto& each : families)
  {
    for (const TiffTag member : each.members)
    {
      EXPECT_EQ(member & TiffTag::kGMSK, each.family) << member;
      EXPECT_TRUE(FLidflags(member.value()) & each.flag) << member;
    }
  }
}

TEST(TiffTagArray, findsAnIndex)
{
  TiffTagArray tags{TiffTag::kBODY, TiffTag::kNAME};
  tags.insert("AUTH", 0);
  tags.addLast(TiffTag::kNAME);
  EXPECT_EQ(tags.find(TiffTag::kNAME), 2);
  EXPECT_EQ(tags.remove(TiffTag::kNAME), 0);
  EXPECT_EQ(tags.find("NAME"), 2);
  EXPECT_EQ(tags.find(TiffTag::kCAT), -1);
  unsigned int index = 7;
  EXPECT_EQ(tags.find(TiffTag::kCAT, index), Tarray::kNotFound);
  EXPECT_EQ(index, 3U);
}

using Model = std::multimap<TuInt32, Tmetaclass*>;

bool holds(TiffTable& table, const Model& model)
{
  Model found;
  for (TiffTable::Iterator at(table); !at.isDone(); at.next())
    found.emplace(at.key(), at.data());
  return table.validate() && std::is_permutation(found.begin(), found.end(), model.begin(), model.end());
}

TEST(TiffTable, holdsWhatAModelHolds)
{
  char records[8]; // that are only told apart
  std::mt19937 random(92);
  TiffTable table(0, 64), other;
  Model model;
  for (unsigned step = 0; step < 4000; ++step)
  {
    const TuInt32 key = TuInt32(random() % 40 << (random() % 2 * 20)); // many in one bucket
    Tmetaclass* const value = reinterpret_cast<Tmetaclass*>(&records[random() % 8]);
    Tmetaclass* found = nullptr;
    const bool known = model.count(key) != 0;
    ASSERT_EQ(table.find(key, found), known);
    const auto meant = std::find(model.begin(), model.end(), Model::value_type(key, found)); // of the key's entries
    const unsigned action = unsigned(random() % (step / 500 % 2 ? 16 : 6)); // filling up and emptying by turns
    if (action == 0)
      table.insert(key, value), model.emplace(key, value);
    else if (action <= 2)
      EXPECT_TRUE(table.insertUnique(key, value) == !known && (known || (model.emplace(key, value), true)));
    else if (action == 3)
    {
      table.insertReplace(key, value);
      EXPECT_EQ(*table.find(key), value);
      known ? meant->second = value : model.emplace(key, value)->second;
    }
    else if (action == 4 && step % 16 == 0)
    {
      for (TiffTable::Iterator at(table); !at.isDone();)
        at.key() % 8 == 3 ? at.removeThenNext() : at.next();
      std::erase_if(model, [](const auto& each) { return each.first % 8 == 3; });
    }
    else
    {
      EXPECT_EQ(table.remove(key), known);
      if (known)
        model.erase(meant);
    }
    ASSERT_TRUE(step % 8 || holds(table, model)) << step;
  }
  TiffTable::Iterator at(table);
  at.appendAllTo(other);
  at.appendAllTo(table); // no change
  EXPECT_TRUE(holds(table, model) && holds(other, model) && model.size() > 3);
  const TuInt32 buckets = other.bucketCount();
  other.clearall();
  EXPECT_TRUE(holds(other, {}) && other.bucketCount() == buckets && !TiffTable::Iterator(other).removeThenNext());
  other.reset();
  EXPECT_EQ(other.bucketCount(), 8U);
}

#if FAILING_MEMORY
TEST(TiffTable, addsNothingWithoutMemory)
{
  TiffTable table;
  const int runs = forEachFailingAllocation([&] {
    TuInt32 inserted = 0;
    for (const TuInt32 key : {1U, 2U, 3U, 4U}) // the fourth grows the table
    {
      try
      {
        inserted += table.insertUnique(key, nullptr);
      }
      catch (const TmemoryException&)
      {
        EXPECT_FALSE(table.find(key));
      }
    }
    EXPECT_TRUE(table.validate() && table.entryCount() == inserted);
    table.reset();
  });
  EXPECT_GT(runs, 4);
}
#endif

} // namespace
