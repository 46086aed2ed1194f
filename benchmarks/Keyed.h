/// \file
/// What is measured of a container that finds a value by a key, in 1,000 to 1,000,000 elements.
///
/// Keys are drawn at random, without order in memory or in time. What a run found is summed and compared, so that no
/// container can leave work out. A run is measured in slices, and the shortest of them counts for all: on a busy
/// machine a slice may be left alone where a run is not.

#pragma once

#include "benchmarks/Ratios.h"

#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <random>
#include <utility>

constexpr std::size_t kLookups = 200000;
constexpr std::size_t kSlice = 2000;

/// The keys in a container of \p size, as many that it lacks, and the order of look-ups.
template <class Key>
struct Keys
{
  template <class Make>
  Keys(std::size_t size, Make make)
  {
    std::mt19937_64 random(size);
    for (std::size_t i = 0; i < size; ++i)
    {
      present.push_back(make(random() | 1));
      absent.push_back(make(random() & ~std::uint64_t(1)));
    }
    for (std::size_t i = 0; i < kLookups; ++i)
      order.push_back(std::uint32_t(random() % size));
  }
  std::vector<Key> present, absent;
  std::vector<std::uint32_t> order;
};

inline void require(bool good, const std::string& what)
{
  if (!good)
  {
    std::fprintf(stderr, "%s went wrong\n", what.c_str());
    std::_Exit(1);
  }
}

/// What malloc() has given out.
inline std::size_t heapBytes()
{
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

/// Adds the cases of one container: a default-constructed Container with insert(key, value) and find(key), which
/// returns the address of the value or null; with \p walks also sum(), over the values in the order of the keys.
template <class Container, bool walks = false, class Key>
void addKeyed(std::vector<Case>& cases, const std::string& kind, const std::string& name, bool ours,
              const std::shared_ptr<Keys<Key>>& keys)
{
  const std::size_t size = keys->present.size();
  const std::string tail = " " + kind + " " + std::to_string(size);
  const int passes = int(std::max<std::size_t>(1, kLookups / size));
  const auto fill = [keys](Container& container) {
    for (std::size_t i = 0; i < keys->present.size(); ++i)
      container.insert(keys->present[i], i);
  };
  // Made at the first look-up and kept: building a large one takes longer than measuring it.
  const auto full = std::make_shared<std::unique_ptr<Container>>();
  const auto filled = [=]() -> Container& {
    if (!*full)
    {
      const std::size_t before = heapBytes();
      *full = std::make_unique<Container>();
      fill(**full);
      std::printf("%-24s%-18s%7.1f bytes an element\n", tail.c_str(), name.c_str(),
                  double(heapBytes() - before) / double(size));
    }
    return **full;
  };
  const auto add = [&](const char* operation, auto run) { cases.push_back({operation + tail, name, ours, 1, run}); };
  for (const bool hits : {true, false})
  {
    add(hits ? "hit" : "miss", [=] {
      const Container& container = filled();
      std::uint64_t sum = 0, wanted = 0;
      const std::vector<Key>& sought = hits ? keys->present : keys->absent;
      double time = 1e9;
      for (auto slice = keys->order.begin(); slice != keys->order.end(); slice += kSlice)
      {
        time = std::min(time, seconds([&] {
                          std::for_each(slice, slice + kSlice, [&](std::uint32_t i) {
                            const std::uint64_t* value = container.find(sought[i]);
                            sum += value ? *value : 0;
                          });
                        }));
      }
      for (const std::uint32_t i : keys->order)
        wanted += hits ? i : 0;
      require(sum == wanted, name + tail);
      return time * (kLookups / kSlice);
    });
  }
  add("insert", [=] {
    double time = 1e9;
    for (int i = 0; i < passes; ++i)
    {
      const auto container = std::make_unique<Container>();
      time = std::min(time, seconds([&] { fill(*container); }));
      const std::uint64_t* last = container->find(keys->present.back());
      require(last && *last == keys->present.size() - 1, name + tail);
    }
    return time * passes;
  });
  if constexpr (walks)
  {
    add("walk", [=] {
      const Container& container = filled();
      std::uint64_t sum = 0;
      double time = 1e9;
      for (int i = 0; i < passes; ++i)
        time = std::min(time, seconds([&] { sum += container.sum(); }));
      require(sum == std::uint64_t(passes) * keys->present.size() * (keys->present.size() - 1) / 2, name + tail);
      return time * passes;
    });
  }
}
