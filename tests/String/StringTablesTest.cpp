#include "Foundation/Debug/Texception.h"
#include "Foundation/String/ResourceMaps.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

namespace {

Tstring textOf(unsigned number)
{
  return Tstring(std::to_string(number).c_str());
}

std::string valuesOf(const TstringHashTable& table)
{
  std::string values;
  for (const auto& each : table)
    values += each.value().asC();
  return values;
}

TEST(StringTables, followTheirModel)
{
  std::mt19937 random(1);
  TstringHashTable table(8, 64); // longer chains when it is full
  std::map<Tstring, Tstring> model;
  for (unsigned step = 1; step <= 5000; ++step)
  {
    const Tstring key = step % 500 == 0 ? Tstring() : textOf(unsigned(random() % 100)), value = textOf(step);
    const bool known = model.contains(key);
    Tstring found("before");
    ASSERT_TRUE(table.find(key, found) == known && found == (known ? model[key] : "before"));
    const unsigned choice = unsigned(random() % 4);
    if (choice > 1)
      ASSERT_TRUE(table.remove(key) == known && model.erase(key) == known);
    else
    {
      ASSERT_EQ(choice == 0 ? table.insertUnique(key, value) : table.insertReplace(key, value), !known);
      choice == 0 ? model.emplace(key, value) : model.insert_or_assign(key, value);
    }
    if (step % 1000 == 0)
      table.reset(), model.clear();
    ASSERT_TRUE(table.validate() && table.entryCount() == model.size());
    for (const auto& each : std::as_const(table))
      ASSERT_EQ(each.value(), model[each.key()]);
  }
}

TEST(StringTables, keepEntriesOfOneKey)
{
  TstringHashTable table, other(1024);
  for (const char* value : {"a", "b", "c", "d"})
  {
    other.insert("key", value);
    EXPECT_EQ(*other.find("key"), value); // the newest
  }
  TstringHashTable::Iterator at(other);
  at.appendAllTo(table);
  at.appendAllTo(other);
  EXPECT_EQ(valuesOf(table), "dcba"); // put in from "d" on, and turned over by the growth at the last
  EXPECT_EQ(valuesOf(other), "abcddcba");
  EXPECT_TRUE(at.next() && at.removeThenNext() && at.removeThenNext() && at.entry() && !at.removeThenNext());
  EXPECT_TRUE(!at.removeThenNext() && other.validate());
  EXPECT_EQ(valuesOf(other), "abcdd");
  EXPECT_EQ(other.remove(other.begin()->key()), 1); // which goes with its entry
  EXPECT_EQ(valuesOf(other), "bcdd");
  TstringHashTable::Iterator late(table);
  while (table.bucketCount() < 64)
    table.insert("else", "");
  while (late.removeThenNext()) // in other buckets now, but in the table
    EXPECT_TRUE(table.validate());
}

TEST(StringTables, mapNamesToResources)
{
  CMapStringToMap resources;
  for (int i = 0; i < 2; ++i)
    resources.findOrInsert("icons").insertReplace("lamp", CMappedRes(TresId(i), "lights"));
  const CMappedRes* found = resources.find("icons", "lamp");
  EXPECT_TRUE(found && *found == CMappedRes(TresId(1), "lights") && *found != TresId(1));
  EXPECT_FALSE(resources.find("icons", "chair") || resources.find("menus", "lamp"));
}

#if FAILING_MEMORY
TEST(StringTables, liveWithoutMemory)
{
  const int runs = forEachFailingAllocation([] {
    TuInt32 count = 0;
    try
    {
      CMapStringToMap maps;
      TstringHashTable table;
      for (; count < 60; ++count)
      {
        table.insert(Tstring(), Tstring());
        EXPECT_TRUE(table.validate() && table.entryCount() == count + 1);
      }
      maps.findOrInsert(Tstring()).findOrInsert(Tstring());
      TstringHashTable::Iterator(table).appendAllTo(table);
    }
    catch (const TmemoryException&)
    {
    }
  });
  EXPECT_GT(runs, 100);
}
#endif

} // namespace
