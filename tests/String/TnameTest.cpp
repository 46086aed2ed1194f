#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/TnameObject.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
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

bool isDigit(char c)
{
  return c >= '0' && c <= '9';
}

// A name taken apart: characters, and numbers with their last eight digits and their length.
std::vector<std::array<long, 3>> parts(const std::string& text)
{
  std::vector<std::array<long, 3>> result;
  for (std::size_t i = 0, end; i < text.size(); i = end)
  {
    end = isDigit(text[i]) && text[i] != '0' ? std::min(text.find_first_not_of("0123456789", i), text.size()) : i;
    const std::size_t length = end - i;
    if (length == 0)
      result.push_back({static_cast<signed char>(text[end++]), 0, 0});
    else
      result.push_back({'1', std::stol(text.substr(end - std::min<std::size_t>(length, 8), 8)), long(length)});
  }
  result.push_back({0, 0, 0});
  return result;
}

struct Less
{
  bool operator()(const std::string& a, const std::string& b) const { return parts(a) < parts(b); }
};

using Model = std::map<std::string, int, Less>; // the holders of each name

std::size_t baseSize(const std::string& name)
{
  return name.find_last_not_of("0123456789") + 1;
}

// Whether \p made is what makes \p name unique: the number behind the last one, or else one that is free behind one
// that is taken.
bool isNext(const Model& model, const std::string& name, const std::string& made)
{
  const std::string base = name.substr(0, baseSize(name));
  const auto place = model.lower_bound(base + '@');
  const std::string last = place == model.begin() ? "" : std::prev(place)->first;
  const std::string lastNumber = last.substr(baseSize(last));
  const bool isVersion = last.substr(0, baseSize(last)) == base && !lastNumber.empty() && lastNumber != "4294967295";
  const std::string next = base + std::to_string(isVersion ? std::stoul(lastNumber) + 1 : 1);
  if (!model.count(next) || baseSize(made) != base.size())
    return made == next;
  const unsigned number = unsigned(std::stoul(made.substr(base.size())));
  return !model.count(made) && model.count(base + std::to_string(number - 1)) && made == base + std::to_string(number);
}

::testing::AssertionResult isTable(const Model& model)
{
  if (!Tname::nameTable().validate())
    return ::testing::AssertionFailure() << "out of order";
  auto wanted = model.begin();
  for (const TnameDictionaryNode& each : Tname::nameTable())
  {
    if (wanted == model.end() || each.key().asC() != wanted->first || each.data().count() != wanted->second)
      return ::testing::AssertionFailure() << each.key() << " held by " << each.data().count();
    ++wanted;
  }
  return wanted == model.end() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << wanted->first;
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
  const char* const tails[] = {"", " ", "\t\n", "#", " #", "# #"};
  const unsigned numbers[] = {0, 3, 40, 99999999, 199999999, 299999999, 4294967295};
  std::mt19937 random(3);
  const auto pick = [&random](const auto& list) { return list[random() % std::size(list)]; };
  Model model;
  std::vector<Tname> names(40);
  const auto leave = [&model](const std::string& text) {
    const auto held = model.find(text);
    if (held != model.end() && --held->second == 0)
      model.erase(held);
  };
  for (int step = 0; step < 30000; ++step)
  {
    Tname& name = names[random() % names.size()];
    const Tname& other = names[random() % names.size()];
    const std::string before(name);
    const unsigned choice = unsigned(random() % 8);
    bool isToBeUnique = choice == 0;
    if (choice < 4)
    {
      std::string text = before; // what the name then is, if it need not be unique
      if (choice == 0)
        name.makeUnique();
      else
      {
        text = pick(bases) + (random() % 4 ? std::to_string(random() % 3 ? random() % 6 : pick(numbers)) : "");
        const std::string tail = pick(tails);
        isToBeUnique = tail.find('#') != std::string::npos;
        choice == 1 ? name = Tstring(std::string_view(text + tail)) : name = (text + tail).c_str();
      }
      const bool isSame = !Less()(text, before) && !Less()(before, text);
      const auto known = model.find(text);
      if (isToBeUnique && known != model.end() && known->second > isSame)
        ASSERT_TRUE(isNext(model, known->first, name.asC())) << text << " " << name;
      else
        ASSERT_EQ(name, known == model.end() ? text : known->first);
    }
    else if (choice < 7)
      choice == 4 ? name = other : choice == 5 ? name = other.asC() : name = Tname(other);
    else
      name.clear();
    if (!name.empty())
      ++model[name.asC()];
    leave(before);
    ASSERT_TRUE(isTable(model));
    ASSERT_EQ(name.isUnique(), !name.empty() && model[name.asC()] == 1);
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
  const Tname hides("lamp9999_left"), high("a2147483647"), highest("b4294967295");
  const std::pair<const char*, TuInt32> cases[] = {{"lamp", 1001}, {"lam", 1}, {"z", 1}, {"a", 2147483648}, {"b", 1}};
  for (const auto& [base, next] : cases)
    EXPECT_EQ(Protected::getNextVersionNumber(base), next) << base;
}

TEST(Tname, isAValueLikeOthers)
{
  Tname one("arm9"), two = one, none;
  const Tname ten("arm10"), low("\x80");
  Tname moved(std::move(one));
  swap(two, moved);
  one = std::move(two);
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

// Six objects called "lamp", every other one a Lamp.
struct Objects
{
  Objects()
  {
    for (int i = 0; i < 6; ++i)
      all.push_back(i % 2 ? std::make_unique<Lamp>(name) : std::make_unique<TnameObject>(name));
  }
  // Which are met on a walk. \p atEach is done at each.
  template <class Act>
  std::string met(Tmetaclass* type, Act atEach)
  {
    std::string result;
    for (TnameObject* each : TnameObjectIterator("lamp ", type))
    {
      const auto place = std::find_if(all.begin(), all.end(), [each](auto& one) { return one.get() == each; });
      result += char('0' + (place - all.begin()));
      atEach(*place);
    }
    return result;
  }
  Tname name{"lamp"};
  std::vector<std::unique_ptr<TnameObject>> all;
};

TEST(TnameObject, isFoundByItsName)
{
  using Object = std::unique_ptr<TnameObject>;
  const auto nothing = [](Object&) {};
  EXPECT_EQ(Objects().met(nullptr, nothing), "543210");
  EXPECT_EQ(Objects().met(TnameObject::fTypeid, nothing), "543210");
  EXPECT_EQ(Objects().met(&Lamp::record(), nothing), "531");
  EXPECT_EQ(Objects().met(Tdictionary::fTypeid, nothing), "");
  // Objects and names come and go on the way.
  EXPECT_EQ(Objects().met(nullptr, [](Object& each) { each.reset(); }), "543210");
  const auto met = [](Tmetaclass* type, auto act) {
    Objects objects;
    objects.name.clear();
    return objects.met(type, [&](Object& each) { act(objects.all, *each); });
  };
  using All = std::vector<Object>;
  EXPECT_EQ(met(nullptr, [](All& all, TnameObject&) { all[4].reset(), all[3].reset(), all[0].reset(); }), "521");
  EXPECT_EQ(met(nullptr, [](All& all, TnameObject& each) { each.setName("chair"), all[0]->setPlainName("lamp"); }),
            "54321");
  EXPECT_EQ(met(&Lamp::record(), [](All& all, TnameObject&) { all.push_back(std::make_unique<Lamp>(Tname("lamp"))); }),
            "531");
  EXPECT_EQ(met(nullptr, [](All& all, TnameObject&) { all.clear(), all.resize(6); }), "5");
}

TEST(TnameObject, entersAndLeavesTheList)
{
  TnameObject plain, lamp(Tname("lamp"));
  plain.setPlainName("lamp");
  const auto first = [] { return TnameObjectIterator("lamp").item(); };
  EXPECT_TRUE(lamp.hasUniqueName() && !plain.hasUniqueName() && !TnameObject().hasUniqueName());
  {
    Tname name("lamp");
    const TnameObject copy(lamp);
    EXPECT_TRUE(first() == &copy && !lamp.hasUniqueName());
    name.addObject(&lamp); // which is there already
    EXPECT_EQ(first(), &copy);
    name.removeObject(&lamp);
    name.addObject(&lamp);
    EXPECT_EQ(first(), &lamp);
    name.addObject(&plain);
    EXPECT_EQ(first(), &plain);
    name.removeObject(&plain);
  }
  TnameObjectIterator walk("lamp");
  EXPECT_EQ(walk.item(), &lamp);
  lamp.setName(Tname()); // the last holder
  EXPECT_TRUE(!walk.item() && !walk.next() && plain.hasUniqueName());
  EXPECT_TRUE(Lamp().cast(TnameObject::fTypeid) && !lamp.cast(&Lamp::record()));
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
  EXPECT_TRUE(dictionary.begin()->cast(TdictionaryNode::fTypeid) && dictionary.typeof()->isa(Tdictionary::fTypeid));
}

#if FAILING_MEMORY
TEST(Tname, livesWithoutMemory)
{
  const int runs = forEachFailingAllocation([] {
    const char* const text = "a name that is too long for a short block 1";
    Tname name, other, more[20];
    TnameObject object, copy;
    const auto attempt = [&](auto step) {
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
    attempt([&] { other = name; });
    attempt([&] { name.makeUnique(); });
    attempt([&] { name = "b1"; });
    attempt([&] { other = name; });
    attempt([&] { name = "b1#"; });
    attempt([&] { object.setName("lamp"); });
    attempt([&] { copy = object; });
    attempt([&] { object.setName(name); });
    attempt([&] { object.setPlainName(text); });
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
