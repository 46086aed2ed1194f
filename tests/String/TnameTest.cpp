#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameObject.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

struct Protected : Tname
{
  using Tname::convertName;
  using Tname::getNextVersionNumber;
};

using Model = std::map<TnameString, int>; // the holders of each name

bool isTable(const Model& model)
{
  const TnameDictionary& table = Tname::nameTable();
  return table.validate() &&
         std::equal(table.begin(), table.end(), model.begin(), model.end(), [](auto& each, auto& wanted) {
           return each.key().asC() == std::string(wanted.first.asC()) && each.data().count() == wanted.second;
         });
}

TEST(TnameString, ordersNumbers)
{
  const struct
  {
    const char *less, *more;
    int difference;
  } cases[] = {
    {"a9", "a10", 9 - 0x10}, {"a05", "a1", -1},           {"a05", "a010", 5 - 0x10}, {"a1", "a99999999", -INT_MAX},
    {"a", "b", -1},          {"a1b2", "a1b10", 2 - 0x10}, {"\x80", "", -128},        {"a100000001", "a5", 1 - 5},
    {"a", "a0", -'0'},       {nullptr, "1", -'1'},        {"a1:", "a10", 1 - 0x10},  {"a8", "a100000008", 1 - 9},
  };
  for (const auto& each : cases)
  {
    EXPECT_EQ(TnameString::strnumcmp(each.less, each.more), each.difference) << each.more;
    EXPECT_EQ(TnameString::strnumcmp(each.more, each.less), -each.difference) << each.more;
    EXPECT_TRUE(TnameString(each.less) < TnameString(each.more));
  }
  const TnameString two("a1234567890b"), same("a9934567890b");
  EXPECT_TRUE(two == same && two != same.asC() && same != Tstring(two));
}

TEST(Tname, followsItsModel)
{
  const std::string bases[] = {"arm", "a", "", "arm7x", "arm40_left", "\xC3\xA9"};
  const std::string tails[] = {"", " ", "\t\n", "#", " #", "# #"};
  const unsigned numbers[] = {0, 3, 40, 99999999, 199999999, 299999999, 4294967295};
  std::mt19937 random(3);
  const auto pick = [&random](auto& list) -> auto&
  {
    return list[random() % std::size(list)];
  };
  Model model;
  std::vector<Tname> names(40);
  for (int step = 0; step < 30000; ++step)
  {
    Tname &name = pick(names), &other = pick(names);
    const TnameString before(name.asString());
    const unsigned choice = unsigned(random() % 8);
    std::string text(choice == 0 ? name : other), tail(choice == 0 ? "#" : "");
    if (choice == 0)
      name.makeUnique();
    else if (choice == 1)
      name.clear(), text.clear();
    else if (choice < 5)
      choice == 2 ? name = other : choice == 3 ? name = other.asC() : name = Tname(other);
    else
    {
      text = pick(bases) + (random() % 4 ? std::to_string(random() % 3 ? random() % 6 : pick(numbers)) : "");
      tail = pick(tails);
      choice == 5 ? name = Tstring(std::string_view(text + tail)) : name = (text + tail).c_str();
    }
    const TnameString wanted(text.c_str()), is(name.asString());
    const auto known = model.find(wanted);
    if (known != model.end() && known->second > (wanted == before) && tail.find('#') != std::string::npos)
      ASSERT_TRUE(!model.contains(is) && is.baseString() == known->first.baseString()) << text << " " << name;
    else
      ASSERT_STREQ(is.asC(), known == model.end() ? text.c_str() : known->first.asC());
    if (!name.empty())
      ++model[is];
    const auto left = model.find(before);
    if (left != model.end() && --left->second == 0)
      model.erase(left);
    ASSERT_TRUE(isTable(model));
    ASSERT_EQ(name.isUnique(), !name.empty() && model[is] == 1);
  }
}

TEST(Tname, takesTextsApart)
{
  const struct
  {
    Tstring text;
    const char *canonical, *valid, *base;
    TuInt32 version;
  } cases[] = {
    {"arm 1 #", "arm 1", "arm_1__", "arm ", 1},
    {"", "", "_", "", 0},
    {"1a007", "1a007", "_1a007", "1a", 7},
    {" a# \t#\r\n", " a", "_a______", " a", 0},
    {Tstring(std::string_view("a\0b", 3)), "a", "a_b", "a", 0},
    {"\xC3\xA9_4294967296", "\xC3\xA9_4294967296", "___4294967296", "\xC3\xA9_", ~0U},
    {"Z_9a", "Z_9a", "Z_9a", "Z_9a", 0},
    {"12345678901234567890", "12345678901234567890", "_12345678901234567890", "", ~0U},
  };
  for (const auto& each : cases)
  {
    const TnameString name = Protected::convertName(each.text.asC());
    EXPECT_EQ(name, TnameString(each.canonical));
    EXPECT_EQ(Tname(each.text), each.canonical);
    EXPECT_EQ(Tname::validateName(each.text), each.valid);
    EXPECT_TRUE(name.baseString() == each.base && name.versionNumber() == each.version) << name;
  }
}

TEST(Tname, numbersFromABase)
{
  std::vector<Tname> names;
  for (int i = 1; i <= 1000; ++i)
    names.emplace_back(("lamp" + std::to_string(i)).c_str());
  for (const char* const each : {"lamp9999_left", "a2147483647", "b4294967295", "c", "d7", "d009", "e3_2", "f40"})
    names.emplace_back(each);
  const std::pair<const char*, TuInt32> cases[] = {{"lamp", 1001}, {"lam", 1}, {"z", 1}, {"a", 2147483648}, {"b", 1},
                                                   {"c", 1},       {"d", 8},   {"e", 1}, {"e3_", 3},        {"f", 41}};
  for (const auto& [base, next] : cases)
    EXPECT_EQ(Protected::getNextVersionNumber(base), next) << base;
}

TEST(Tname, isAValueLikeOthers)
{
  Tname one("arm9"), two = one, none;
  const Tname ten("arm10"), low("\x80");
  Tname moved(std::move(one));
  one = std::move(two);
  // NOLINTNEXTLINE(bugprone-use-after-move): it is empty then
  EXPECT_TRUE(one == moved && two.empty() && Tname::nameTable().search(TnameString("arm9"))->count() == 2);
  EXPECT_TRUE(one != ten && one < ten && !(ten <= one) && none < low && !(low < none));
  EXPECT_TRUE(one == "arm9" && Tstring("arm9") == one && std::string("arm") != one && none == (const char*)nullptr);
  EXPECT_EQ((std::unordered_set<Tname>{one, moved, ten, none}).size(), 3U);
  std::ostringstream out;
  out << one << none << ten;
  EXPECT_EQ(out.str(), "arm9arm10");
}

class Lamp : public TnameObject
{
public:
  using TnameObject::TnameObject;
  void* cast(Tmetaclass* type) override { return type == &record() ? this : TnameObject::cast(type); }
  static Tmetaclass& record()
  {
    static Tmetaclass record(nullptr, "Lamp", sizeof(Lamp), nullptr, 0, 0, &TnameObject::fTypeid);
    return record;
  }
};

TEST(TnameObject, isFoundByItsName)
{
  using Object = std::unique_ptr<TnameObject>;
  using All = std::vector<Object>;
  // Of six objects called "lamp", every other one a Lamp, these are met while this is done at each.
  const struct
  {
    Tmetaclass* type;
    const char* met;
    void (*act)(All& all, Object& each);
  } cases[] = {
    {TnameObject::fTypeid, "543210", [](All&, Object&) {}},
    {Tdictionary::fTypeid, "", [](All&, Object&) {}},
    {nullptr, "543210", [](All&, Object& each) { each.reset(); }},
    {nullptr, "521", [](All& all, Object&) { all[4].reset(), all[3].reset(), all[0].reset(); }},
    {nullptr, "54321", [](All& all, Object& each) { each->setName("chair"), all[0]->setPlainName("lamp"); }},
    {&Lamp::record(), "531", [](All& all, Object&) { all.push_back(std::make_unique<Lamp>(Tname("lamp"))); }},
    {nullptr, "5", [](All& all, Object&) { all.clear(), all.resize(6); }},
  };
  for (const auto& [type, wanted, act] : cases)
  {
    All all;
    for (int i = 0; i < 6; ++i)
      all.push_back(i % 2 ? std::make_unique<Lamp>(Tname("lamp")) : std::make_unique<TnameObject>(Tname("lamp")));
    std::string met;
    for (TnameObject* each : TnameObjectIterator("lamp ", type))
    {
      const auto place = std::find_if(all.begin(), all.end(), [each](auto& one) { return one.get() == each; });
      met += char('0' + (place - all.begin()));
      act(all, *place);
    }
    EXPECT_EQ(met, wanted);
  }
}

TEST(TnameObject, entersAndLeavesTheList)
{
  TnameObject plain, lamp(Tname("lamp"));
  plain.setPlainName("lamp");
  const auto first = [] { return TnameObjectIterator("lamp").item(); };
  EXPECT_TRUE(lamp.hasUniqueName() && !plain.hasUniqueName() && !TnameObject().hasUniqueName());
  {
    Tname name("lamp");
    TnameObject copy(lamp), late;
    name.addObject(&lamp); // which is there already
    EXPECT_TRUE(first() == &copy && !lamp.hasUniqueName());
    name.removeObject(&lamp);
    name.addObject(&lamp);
    EXPECT_EQ(first(), &lamp);
    name.addObject(&late);
    late = copy; // for the second time
    name.removeObject(&late);
    EXPECT_EQ(first(), &late);
  }
  TnameObjectIterator walk("lamp");
  EXPECT_EQ(walk.item(), &lamp);
  lamp.setName(Tname()); // the last holder
  EXPECT_TRUE(!walk.item() && !walk.next() && plain.hasUniqueName());
}

TEST(TnameDictionary, keepsItsValues)
{
  const TnameString two("b2"), ten("b10");
  TnameInfo info;
  TnameObject object;
  info.addObject(&object);
  info.addObject(nullptr);
  TnameDictionary dictionary;
  Tbookmark place;
  EXPECT_FALSE(dictionary.search(two, place));
  dictionary.insert(two, info, place);
  dictionary.insert(ten, TnameInfo())->setValue(*dictionary.findNode(two));
  EXPECT_TRUE(dictionary.remove(two) && !dictionary.remove(two) && dictionary.validate());
  const TnameInfo::Tcell* cell = dictionary.search(ten)->objects(); // lists of their own
  EXPECT_TRUE(!cell->fObject && cell->fNext->fObject == &object && cell != info.objects());
}

#if FAILING_MEMORY
TEST(Tname, livesWithoutMemory)
{
  const int runs = forEachFailingAllocation([] {
    const char* const text = "a name that is too long for a short block 1";
    Tname name, other, more[20];
    TnameObject object, copy;
    const auto attempt = [&](auto step) {
      // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the step changes what is copied
      const Tname before = name, borne = object.internedName();
      try
      {
        step();
      }
      catch (const TmemoryException&)
      {
        EXPECT_TRUE(name == before && object.internedName() == borne);
      }
      EXPECT_TRUE(Tname::nameTable().validate());
    };
    attempt([&] { name = text; });
    attempt([&] { other = name, name.makeUnique(); });
    attempt([&] { name = "b1", other = name; });
    attempt([&] { name = "b1#"; });
    attempt([&] { object.setName("lamp"); });
    attempt([&] { copy = object, object.setName(name); });
    object.setPlainName("plain");
    attempt([&] { EXPECT_EQ(object.hasUniqueName(), !object.name().empty()); });
    attempt([&] { EXPECT_EQ(Tname::validateName("1"), "_1"); });
    for (int i = 0; i < 20; ++i)
      attempt([&] { more[i] = std::to_string(i).c_str(); });
  });
  EXPECT_GT(runs, 30);
  EXPECT_TRUE(isTable({}));
}
#endif

} // namespace
