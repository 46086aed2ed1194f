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

TEST(StringTables, followTheirModel)
{
  std::mt19937 random(1);
  TstringHashTable table(8, 64); // longer chains when it is full
  std::map<std::string, std::string> model;
  for (unsigned step = 0; step < 5000; ++step)
  {
    const Tstring key = step % 500 == 0 ? Tstring() : textOf(unsigned(random() % 100)), value = textOf(step);
    const bool known = model.contains(key.asC());
    Tstring found("before");
    ASSERT_EQ(table.find(key, found), known);
    ASSERT_EQ(found, known ? model[key.asC()] : "before");
    switch (random() % 4)
    {
    case 0:
      ASSERT_EQ(table.insertUnique(key, value), !known);
      model.emplace(key.asC(), value.asC());
      break;
    case 1:
      ASSERT_EQ(table.insertReplace(key, value), !known);
      model[key.asC()] = value.asC();
      break;
    default: ASSERT_EQ(table.remove(key), known); model.erase(key.asC());
    }
    if (step % 1000 == 0)
    {
      table.reset();
      model.clear();
    }
    ASSERT_TRUE(table.validate());
    std::map<std::string, std::string> all;
    for (const auto& each : std::as_const(table))
      all.emplace(each.key().asC(), each.value().asC());
    ASSERT_EQ(all, model);
  }
}

TEST(StringTables, keepEntriesOfOneKey)
{
  TstringHashTable table(1024), other;
  for (unsigned i = 0; i < 100; ++i)
    table.insert(textOf(i % 10), textOf(i));
  for (unsigned i = 100; i-- > 50;)
  {
    EXPECT_EQ(*table.find(textOf(i % 10)), textOf(i)); // the newest
    table.remove(textOf(i % 10));
  }
  TstringHashTable::Iterator at(table);
  for (Tstring value; at.getData(value);)
  {
    const bool goesOn = value.asInt32() % 2 ? at.removeThenNext() : at.next();
    EXPECT_EQ(goesOn, at.entry() != nullptr);
  }
  EXPECT_TRUE(!at.removeThenNext() && table.validate());
  TstringHashTable::Iterator(table).appendAllTo(table);
  TstringHashTable::Iterator(table).appendAllTo(other);
  EXPECT_EQ(other.entryCount(), 50U);
  for (const auto& each : other)
    EXPECT_TRUE(each.value().asInt32() % 2 == 0 && each.key().asInt32() == each.value().asInt32() % 10);
  EXPECT_EQ(other.remove(other.begin()->key()), 1); // which goes with its entry
  const Tstring key = other.begin()->key();
  while (other.remove(key))
    EXPECT_TRUE(other.validate());
  EXPECT_EQ(other.entryCount(), 40U);
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
      const CMappedRes& made = maps.findOrInsert(Tstring()).findOrInsert(Tstring());
      EXPECT_EQ(&made, maps.find(Tstring(), Tstring()));
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
