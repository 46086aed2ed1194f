// What a question about the class of an object costs, and looking up a class among 10,000 registered ones.
//
// The objects are Qt's too, and keep the number of their class besides. Each test asks 10,000 of them 100 times
// whether they are of a class: "hit" of their own one, "hit.3" and "hit.5" of one so many levels above it, "miss" of
// one that none of them is. They are of one class six levels deep, or (".4") of four of these in random order, which no
// processor foresees. Where the class stands in the object, a test need not call a virtual function first: "typeof()"
// and "enum" do that, "record" and "enum field" do not. What is found is counted and compared.
//
// "find" looks up all of 10,000 classes in random order. "growth" does 10,000 look-ups of our own alone with 100 to
// 10,000 classes there.
//
// One table alone: --benchmark_filter=miss/

#include "Foundation/Data/Tmetaclass.h"
#include "benchmarks/Keyed.h"

#include <QObject>

#include <numeric>
#include <string_view>
#include <typeinfo>
#include <unordered_map>

namespace {

// A class is all that derives from it: its number is below theirs, and they have all up to its last one.
enum ClassNumber
{
  kRoot,
  kLevel1,
  kLevel2,
  kLevel3,
  kLevel4,
  kLevel5,
  kLeafA,
  kLeafB,
  kLeafC,
  kLeafD,
  kLastLeaf = kLeafD,
  kOther,
  kLast = kOther
};

#define CLASS(Class, Base, lastNumber, ...)                                                                            \
  class Class : public Base                                                                                            \
  {                                                                                                                    \
    Q_OBJECT                                                                                                           \
  public:                                                                                                              \
    static constexpr int kFirst = k##Class, kEnd = lastNumber;                                                         \
    static Tmetaclass* fTypeid;                                                                                        \
    Class() { tell(kFirst, fTypeid); }                                                                                 \
    Tmetaclass* typeof() const override { return fTypeid; }                                                            \
    int number() const override { return kFirst; }                                                                     \
  };                                                                                                                   \
  static Tmetaclass g##Class(&Class::fTypeid, #Class, sizeof(Class), nullptr, 0, 0, ##__VA_ARGS__);                    \
  Tmetaclass* Class::fTypeid = &g##Class;

class Object : public QObject
{
public:
  virtual Tmetaclass* typeof() const = 0;
  virtual int number() const = 0;
  const Tmetaclass* fRecord = nullptr;
  int fNumber = 0;

protected:
  void tell(int number, const Tmetaclass* record)
  {
    fNumber = number;
    fRecord = record;
  }
};
CLASS(Root, Object, kLast)
CLASS(Level1, Root, kLastLeaf, &Root::fTypeid)
CLASS(Level2, Level1, kLastLeaf, &Level1::fTypeid)
CLASS(Level3, Level2, kLastLeaf, &Level2::fTypeid)
CLASS(Level4, Level3, kLastLeaf, &Level3::fTypeid)
CLASS(Level5, Level4, kLastLeaf, &Level4::fTypeid)
CLASS(LeafA, Level5, kLeafA, &Level5::fTypeid)
CLASS(LeafB, Level5, kLeafB, &Level5::fTypeid)
CLASS(LeafC, Level5, kLeafC, &Level5::fTypeid)
CLASS(LeafD, Level5, kLeafD, &Level5::fTypeid)
CLASS(Other, Root, kOther, &Root::fTypeid)

constexpr std::size_t kObjects = 10000;

std::vector<std::unique_ptr<Root>> makeObjects(unsigned kinds)
{
  std::mt19937 random(kinds);
  std::vector<std::unique_ptr<Root>> objects;
  for (std::size_t i = 0; i < kObjects; ++i)
  {
    switch (random() % kinds)
    {
    case 0: objects.push_back(std::make_unique<LeafA>()); break;
    case 1: objects.push_back(std::make_unique<LeafB>()); break;
    case 2: objects.push_back(std::make_unique<LeafC>()); break;
    default: objects.push_back(std::make_unique<LeafD>()); break;
    }
  }
  return objects;
}

std::vector<Case> gCases;
std::vector<Aim> gAims;

template <class Test>
void addTest(const std::string& table, const char* name, bool ours, unsigned kinds, bool expected, Test test)
{
  gCases.push_back({table, name, ours, 3, [=] {
                      const auto objects = makeObjects(kinds);
                      double best = 1e9;
                      for (int slice = 0; slice < 10; ++slice)
                      {
                        std::size_t found = 0;
                        const double time = seconds([&] {
                          for (int i = 0; i < 10; ++i)
                          {
                            for (const auto& object : objects)
                            {
                              asm volatile("" : : "r"(object.get()) : "memory"); // is looked at anew
                              found += test(object.get());
                            }
                          }
                        });
                        require(found == (expected ? 10 * kObjects : 0), table + " " + name);
                        best = std::min(best, time);
                      }
                      return best * 10;
                    }});
}

// Asks objects of so many kinds whether they are of the class: all or none are.
template <class Class>
void addTests(const std::string& table, unsigned kinds, bool expected)
{
  const auto add = [&](const char* name, bool ours, auto test) { addTest(table, name, ours, kinds, expected, test); };
  add("typeof()->isa", true, [](Root* object) { return object->typeof()->isa(Class::fTypeid); });
  add("record->isa", true, [](Root* object) { return object->fRecord->isa(Class::fTypeid); });
  add("dynamic_cast", false, [](Root* object) { return dynamic_cast<Class*>(object) != nullptr; });
  add("qobject_cast", false, [](Root* object) { return qobject_cast<Class*>(object) != nullptr; });
  if (Class::kFirst == Class::kEnd)
    add("typeid ==", false, [](Root* object) { return typeid(*object) == typeid(Class); });
  add("enum", false, [](Root* object) {
    const int number = object->number();
    return number >= Class::kFirst && number <= Class::kEnd;
  });
  add("enum field", false,
      [](Root* object) { return object->fNumber >= Class::kFirst && object->fNumber <= Class::kEnd; });
  gAims.push_back({table, "typeof()->isa", "enum", 1.5});
  gAims.push_back({table, "record->isa", "enum field", 1.5});
  if (!expected)
  {
    gAims.push_back({table, "typeof()->isa", "dynamic_cast", 0.1});
    gAims.push_back({table, "record->isa", "dynamic_cast", 0.1});
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Classes by name and by tag

constexpr std::size_t kClasses = 10000;

struct Classes
{
  std::vector<std::string> names, asked; // the latter copies: addresses are not what is looked up
  std::vector<std::uint32_t> tags;
  std::vector<std::unique_ptr<Tmetaclass>> records;
  std::unordered_map<std::string_view, Tmetaclass*> byName;
  std::unordered_map<std::uint32_t, Tmetaclass*> byTag;
  std::vector<std::uint32_t> order;

  Classes()
  {
    std::mt19937 random(5);
    while (byTag.size() < kClasses)
    {
      std::uint32_t tag = 0;
      for (int i = 0; i < 4; ++i)
        tag = tag << 8 | std::uint32_t('A' + random() % 26);
      if (!byTag.emplace(tag, nullptr).second)
        continue;
      tags.push_back(tag);
      names.push_back("Tclass" + std::to_string(tag));
    }
    asked = names;
    byTag.clear();
  }

  void registerUpTo(std::size_t count)
  {
    for (std::size_t i = records.size(); i < count; ++i)
    {
      records.push_back(
        std::make_unique<Tmetaclass>(nullptr, names[i].c_str(), 4, nullptr, tags[i], 0, &Root::fTypeid));
      byName.emplace(names[i], records[i].get());
      byTag.emplace(tags[i], records[i].get());
    }
    std::mt19937 random(6);
    order.clear();
    for (std::size_t i = 0; i < kClasses; ++i)
      order.push_back(std::uint32_t(i % count));
    std::shuffle(order.begin(), order.end(), random);
  }

  template <class Find>
  double find(const char* name, Find find) const
  {
    bool good = true;
    const double time = seconds([&] {
      for (const std::uint32_t i : order)
        good &= find(i) == records[i].get();
    });
    require(good, name);
    return time;
  }
  double findName() const
  {
    return find("findClass(name)", [&](std::uint32_t i) { return Tmetaclass::findClass(asked[i].c_str()); });
  }
  double findTag() const
  {
    return find("findClass(tag)", [&](std::uint32_t i) { return Tmetaclass::findClass(TiffTag(tags[i])); });
  }
};

Classes gClasses;

void addFinds()
{
  const auto add = [](const char* table, const char* name, bool ours, auto run) {
    gCases.push_back({table, name, ours, 20, run});
  };
  add("find.name", "findClass", true, [] { return gClasses.findName(); });
  add("find.name", "unordered_map", false, [] {
    return gClasses.find("unordered_map", [&](std::uint32_t i) {
      const auto found = gClasses.byName.find(gClasses.asked[i].c_str());
      return found == gClasses.byName.end() ? nullptr : found->second;
    });
  });
  add("find.tag", "findClass", true, [] { return gClasses.findTag(); });
  add("find.tag", "unordered_map", false, [] {
    return gClasses.find("unordered_map", [&](std::uint32_t i) {
      const auto found = gClasses.byTag.find(gClasses.tags[i]);
      return found == gClasses.byTag.end() ? nullptr : found->second;
    });
  });
  gAims.push_back({"find.name", "findClass", "unordered_map", 3});
  gAims.push_back({"find.tag", "findClass", "unordered_map", 3});
}

// Ids are not given out again, so that classes can only become more: this is measured on the way to all of them.
std::vector<Case> measureGrowth()
{
  std::vector<Case> growth;
  for (const std::size_t count : {std::size_t(100), std::size_t(1000), kClasses})
  {
    gClasses.registerUpTo(count);
    growth.push_back({"growth", "name." + std::to_string(count), true, 0, nullptr});
    growth.push_back({"growth", "tag." + std::to_string(count), true, 0, nullptr});
    for (int i = 0; i < 50; ++i)
    {
      (growth.end() - 2)->best = std::min((growth.end() - 2)->best, gClasses.findName());
      growth.back().best = std::min(growth.back().best, gClasses.findTag());
    }
  }
  return growth;
}

} // namespace

int main(int argc, char** argv)
{
  addTests<LeafA>("hit", 1, true);
  addTests<Level3>("hit.3", 1, true);
  addTests<Level1>("hit.5", 1, true);
  addTests<Other>("miss", 1, false);
  addTests<Level3>("hit.3.4", 4, true);
  addTests<Other>("miss.4", 4, false);
  const std::vector<Case> growth = measureGrowth();
  addFinds();
  const int status = runRatios(argc, argv, gCases, gAims);
  if (status == 0)
    printTable("growth", growth, {});
  return status;
}

#include "rtti.moc"
