// Interned names beside sets of strings.
//
// Names are "numbered", as makeUnique() numbers them, or "random", which have a random number; they are asked for in
// random order. To intern a name is compared with finding and inserting it in a set, to let its last holder go with
// erasing it. Only std::set is ordered, as the dictionary of names is, though it does not put 9 before 10. One table
// alone: --benchmark_filter=intern.random.1000000

#include "Foundation/String/Tname.h"
#include "benchmarks/Keyed.h"

#include <QByteArray>
#include <QSet>
#include <absl/container/flat_hash_set.h>
#include <array>
#include <cstring>
#include <set>
#include <unordered_set>

namespace {

std::vector<std::string> makeNames(const std::string& kind, std::size_t size)
{
  std::mt19937_64 random(size);
  std::vector<std::string> names;
  for (std::size_t i = 0; i < size; ++i)
    names.push_back("object" + std::to_string(kind == "random" ? random() : i));
  std::shuffle(names.begin(), names.end(), random);
  return names;
}

// The names, and the order in which they are asked for.
struct Load
{
  Load(const std::string& kind, std::size_t size)
    : names(makeNames(kind, size))
  {
    std::mt19937_64 random(size);
    for (std::size_t i = 0; i < std::max<std::size_t>(size, 200000); ++i)
      order.push_back(std::uint32_t(random() % size));
    for (const std::uint32_t i : order)
      bytes += names[i].size();
  }
  std::vector<std::string> names;
  std::vector<std::uint32_t> order;
  std::size_t bytes = 0; // in all that are asked for
};

// What holds names, each once: has() returns the bytes of the one that it finds.

class Interned
{
public:
  using Key = Tstring;
  void insert(const Key& key) { fNames.emplace_back(key); }
  std::size_t has(const Key& key) const { return std::string_view(Tname(key)).size(); }
  void erase(const Key&) { fNames.pop_back(); }
  void prepareErase() { std::reverse(fNames.begin(), fNames.end()); } // the first one goes first, as in the others

private:
  std::vector<Tname> fNames;
};

template <class Set>
class SetPeer
{
public:
  using Key = typename Set::value_type;
  void insert(const Key& key) { fSet.insert(key); }
  std::size_t has(const Key& key) const
  {
    const auto found = fSet.find(key);
    return found == fSet.end() ? 0 : std::size_t(found->size());
  }
  void erase(const Key& key) { takeOut(fSet, key); }
  void prepareErase() {}

private:
  template <class Any>
  static void takeOut(Any& set, const Key& key)
  {
    set.erase(key);
  }
  static void takeOut(QSet<QByteArray>& set, const QByteArray& key) { set.remove(key); }

  Set fSet;
};

template <class Set>
void addInterning(std::vector<Case>& cases, const std::string& tail, const char* name,
                  const std::shared_ptr<Load>& load)
{
  using Key = typename Set::Key;
  std::vector<Key> keys;
  for (const std::string& each : load->names)
    keys.push_back(Key(each.c_str()));
  const bool ours = std::is_same_v<Set, Interned>;
  const auto shared = std::make_shared<std::vector<Key>>(std::move(keys));
  // All three of one filling: the names of the process are those of one case at a time.
  const auto measure = [=] {
    std::array<double, 3> times = {};
    Set set;
    times[0] = seconds([&] {
      for (const Key& key : *shared)
        set.insert(key);
    });
    std::size_t bytes = 0;
    times[1] = seconds([&] {
      for (const std::uint32_t i : load->order)
        bytes += set.has((*shared)[i]);
    });
    require(bytes == load->bytes, name + tail);
    set.prepareErase();
    times[2] = seconds([&] {
      for (const Key& key : *shared)
        set.erase(key);
    });
    return times;
  };
  const auto last = std::make_shared<std::array<double, 3>>(); // what no case has taken yet; 0 when it has
  const char* const operations[] = {"intern new", "intern", "let go"};
  for (std::size_t i = 0; i < 3; ++i)
  {
    cases.push_back({operations[i] + tail, name, ours, 1, [=] {
                       if ((*last)[i] == 0)
                         *last = measure();
                       return std::exchange((*last)[i], 0);
                     }});
  }
}

// Copies of names, and comparisons of names picked at random.
template <class Name, class Less>
void addValues(std::vector<Case>& cases, const char* name, const std::shared_ptr<Load>& load, Less less)
{
  const auto add = [&](const char* table, auto run) {
    cases.push_back({table, name, std::is_same_v<Name, Tname>, 1, [=] {
                       std::vector<Name> names;
                       for (const std::string& each : load->names)
                         names.push_back(Name(each.c_str()));
                       return run(names);
                     }});
  };
  add("copy", [](const std::vector<Name>& names) {
    return seconds([&] {
      for (int pass = 0; pass < 100; ++pass)
      {
        const std::vector<Name> copies(names);
        require(copies.back() == names.back(), "copy");
      }
    });
  });
  const auto addComparison = [&](const char* table, auto holds) {
    add(table, [=](const std::vector<Name>& names) {
      const std::vector<Name> same(names);
      std::size_t count = 0, wanted = 0;
      const double time = seconds([&] {
        for (std::size_t i = 1; i < load->order.size(); ++i)
          count += holds(names[load->order[i - 1]], same[load->order[i]]);
      });
      for (std::size_t i = 1; i < load->order.size(); ++i)
        wanted += holds(names[load->order[i - 1]], names[load->order[i]]);
      require(count == wanted && count > 0, table);
      return time;
    });
  };
  addComparison("equal", [](const Name& left, const Name& right) { return left == right; });
  addComparison("less", less);
}

} // namespace

int main(int argc, char** argv)
{
  std::vector<Case> cases;
  std::vector<Aim> aims;
  for (const char* const kind : {"random", "numbered"})
  {
    for (const std::size_t size : {1000U, 30000U, 1000000U})
    {
      const auto load = std::make_shared<Load>(kind, size);
      const std::string tail = std::string(" ") + kind + " " + std::to_string(size);
      addInterning<Interned>(cases, tail, "Tname", load);
      addInterning<SetPeer<std::unordered_set<std::string>>>(cases, tail, "unordered_set", load);
      addInterning<SetPeer<std::set<std::string>>>(cases, tail, "std::set", load);
      addInterning<SetPeer<absl::flat_hash_set<std::string>>>(cases, tail, "absl", load);
      addInterning<SetPeer<QSet<QByteArray>>>(cases, tail, "QSet", load);
      aims.push_back({"intern" + tail, "Tname", "unordered_set", 1});
    }
  }
  const auto load = std::make_shared<Load>("numbered", 1000);
  addValues<Tname>(cases, "Tname", load, [](const Tname& left, const Tname& right) { return left < right; });
  addValues<std::string>(cases, "string, strverscmp", load, [](const std::string& left, const std::string& right) {
    return strverscmp(left.c_str(), right.c_str()) < 0;
  });
  addValues<QByteArray>(cases, "QByteArray", load,
                        [](const QByteArray& left, const QByteArray& right) { return left < right; });
  return runRatios(argc, argv, cases, aims);
}
