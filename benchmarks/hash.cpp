// Hash tables beside their peers, keyed by addresses and by strings.
//
// Ours look a key up before they insert it, as the peers do. Each table releases what it holds outside the measured
// time. One table or size alone: --benchmark_filter=strings.1000000

#include "Foundation/Container/TptrHashTable.h"
#include "Foundation/String/StringTables.h"
#include "benchmarks/Keyed.h"

#include <QByteArray>
#include <QHash>
#include <absl/container/flat_hash_map.h>
#include <boost/unordered_map.hpp>
#include <unordered_map>

namespace {

struct Address : TptrHashTableEntry
{
  std::uint64_t fValue;
};

class Addresses : public TptrHashTable
{
public:
  ~Addresses()
  {
    for (auto each = begin(); each != end();)
      delete static_cast<Address*>(&*each++);
  }
  void insert(const void* key, std::uint64_t value)
  {
    if (TptrHashTable::find(key))
      return;
    Address* entry = new Address;
    entry->fValue = value;
    TptrHashTable::insert(entry, key);
  }
  const std::uint64_t* find(const void* key) const
  {
    const TptrHashTableEntry* entry = TptrHashTable::find(key);
    return entry ? &static_cast<const Address*>(entry)->fValue : nullptr;
  }
};

class Texts : public TstringKeyTable<std::uint64_t>
{
public:
  void insert(const Tstring& key, std::uint64_t value) { insertUnique(key, value); }
};

template <class Map>
class Peer
{
public:
  void insert(const typename Map::key_type& key, std::uint64_t value) { fMap.emplace(key, value); }
  const std::uint64_t* find(const typename Map::key_type& key) const
  {
    const auto found = fMap.find(key);
    return found == fMap.end() ? nullptr : &found->second;
  }

private:
  Map fMap;
};

template <class Key>
class QtPeer
{
public:
  void insert(const Key& key, std::uint64_t value) { fMap.insert(key, value); }
  const std::uint64_t* find(const Key& key) const
  {
    const auto found = fMap.constFind(key);
    return found == fMap.constEnd() ? nullptr : &*found;
  }

private:
  QHash<Key, std::uint64_t> fMap;
};

} // namespace

int main(int argc, char** argv)
{
  std::vector<Case> cases;
  std::vector<Aim> aims;
  for (const std::size_t size : {1000U, 30000U, 1000000U})
  {
    using Key = const void*;
    const auto addresses = std::make_shared<Keys<Key>>(size, [](std::uint64_t number) {
      return reinterpret_cast<Key>(number % (std::uint64_t(1) << 47) * 16); // as malloc aligns
    });
    addKeyed<Addresses>(cases, "addresses", "TptrHashTable", true, addresses);
    addKeyed<Peer<std::unordered_map<Key, std::uint64_t>>>(cases, "addresses", "std", false, addresses);
    addKeyed<Peer<boost::unordered_map<Key, std::uint64_t>>>(cases, "addresses", "boost", false, addresses);
    addKeyed<QtPeer<Key>>(cases, "addresses", "QHash", false, addresses);
    addKeyed<Peer<absl::flat_hash_map<Key, std::uint64_t>>>(cases, "addresses", "absl", false, addresses);

    const auto text = [](std::uint64_t number) { return "object" + std::to_string(number); };
    const auto ours = std::make_shared<Keys<Tstring>>(size, [&](std::uint64_t n) { return Tstring(text(n).c_str()); });
    const auto theirs = std::make_shared<Keys<std::string>>(size, text);
    const auto qt =
      std::make_shared<Keys<QByteArray>>(size, [&](std::uint64_t n) { return QByteArray(text(n).c_str()); });
    addKeyed<Texts>(cases, "strings", "TstringKeyTable", true, ours);
    addKeyed<Peer<std::unordered_map<std::string, std::uint64_t>>>(cases, "strings", "std", false, theirs);
    addKeyed<Peer<boost::unordered_map<std::string, std::uint64_t>>>(cases, "strings", "boost", false, theirs);
    addKeyed<QtPeer<QByteArray>>(cases, "strings", "QHash", false, qt);
    addKeyed<Peer<absl::flat_hash_map<std::string, std::uint64_t>>>(cases, "strings", "absl", false, theirs);
  }
  for (const Case& each : cases)
  {
    if (each.ours)
      aims.insert(aims.end(), {{each.table, each.name, "std", 1}, {each.table, each.name, "QHash", 1}});
  }
  return runRatios(argc, argv, cases, aims);
}
