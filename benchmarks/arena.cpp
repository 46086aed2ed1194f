// What a block of an arena costs, in time and memory, beside the system's allocator, two that replace it, and pools.
//
// Each load takes 100,000 blocks, writes to each, and releases them in the order taken, in the opposite one, or in a
// random one; "churn" replaces blocks picked at random, twice as many as there are. Every allocator is warm: its memory
// is there from the run before. Two more tables, at the start, say how many bytes a million live blocks make the
// process larger, and how much longer a thousand times the load takes.
// One table alone: --benchmark_filter=mixed.random

#include "Foundation/Memory/TcompactArena.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TstackArena.h"
#include "Foundation/Memory/TvariantArena.h"
#include "benchmarks/Ratios.h"

#include <algorithm>
#include <boost/pool/pool.hpp>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <map>
#include <memory>
#include <memory_resource>
#include <mimalloc.h>
#include <numeric>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The allocators. The largest block is 512 bytes.

struct Fixed
{
  TfixedArena arena;
  explicit Fixed(unsigned size)
    : arena(size, 65536 / size)
  {
  }
  void* take(unsigned) { return arena.allocate(); }
  void give(void* block, unsigned) { arena.free(block); }
  void end() {}
};

struct Compact
{
  TcompactArena arena;
  explicit Compact(unsigned size)
    : arena(size, 0x40000)
  {
  }
  void* take(unsigned) { return arena.allocate(); }
  void give(void* block, unsigned) { arena.deallocate(block); }
  void end() {}
};

struct Variant
{
  TvariantArena arena{65536};
  explicit Variant(unsigned) {}
  void* take(unsigned size) { return arena.allocate(size); }
  void give(void* block, unsigned) { TvariantArena::deallocate(block); }
  void end() {}
};

struct Stack
{
  TstackArena arena{65536};
  explicit Stack(unsigned) {}
  void* take(unsigned size) { return arena.allocate(size); }
  void give(void*, unsigned) {}
  void end() { arena.reset(); }
};

struct Malloc
{
  explicit Malloc(unsigned) {}
  void* take(unsigned size) { return std::malloc(size); }
  void give(void* block, unsigned) { std::free(block); }
  void end() {}
};

struct Mimalloc
{
  explicit Mimalloc(unsigned) {}
  void* take(unsigned size) { return mi_malloc(size); }
  void give(void* block, unsigned) { mi_free(block); }
  void end() {}
};

// It is linked behind the C library, which so keeps its names; these are looked up in it alone.
struct Jemalloc
{
  template <class Function>
  static Function* find(const char* name)
  {
    static void* library = dlopen("libjemalloc.so.2", RTLD_LAZY);
    void* found = library ? dlsym(library, name) : nullptr;
    if (!found)
    {
      std::fprintf(stderr, "arena: no jemalloc: %s\n", dlerror());
      std::exit(1);
    }
    return reinterpret_cast<Function*>(found);
  }
  void* (*fMalloc)(std::size_t) = find<void*(std::size_t)>("malloc");
  void (*fFree)(void*) = find<void(void*)>("free");
  explicit Jemalloc(unsigned) {}
  void* take(unsigned size) { return fMalloc(size); }
  void give(void* block, unsigned) { fFree(block); }
  void end() {}
};

struct BoostPool
{
  boost::pool<boost::default_user_allocator_malloc_free> pool;
  explicit BoostPool(unsigned size)
    : pool(size)
  {
  }
  void* take(unsigned) { return pool.malloc(); }
  void give(void* block, unsigned) { pool.free(block); }
  void end() {}
};

struct PmrPool
{
  std::pmr::unsynchronized_pool_resource pool;
  explicit PmrPool(unsigned) {}
  void* take(unsigned size) { return pool.allocate(size, 8); }
  void give(void* block, unsigned size) { pool.deallocate(block, size, 8); }
  void end() {}
};

struct PmrMonotonic
{
  std::pmr::monotonic_buffer_resource buffer;
  explicit PmrMonotonic(unsigned) {}
  void* take(unsigned size) { return buffer.allocate(size, 8); }
  void give(void*, unsigned) {}
  void end() { buffer.release(); }
};

// The loads.

constexpr unsigned kMixed = 512; // stands for sizes from 8 up to this

struct Load
{
  std::vector<unsigned> sizes;
  std::vector<unsigned> order;
  unsigned size;
  bool churns;
  std::vector<void*> blocks;
};

Load makeLoad(unsigned size, const std::string& order, unsigned count)
{
  std::mt19937 random(1);
  Load load{std::vector<unsigned>(count, size), std::vector<unsigned>(count), size, order == "churn", {}};
  if (size == kMixed)
    std::generate(load.sizes.begin(), load.sizes.end(), [&] { return unsigned(8 + random() % 505); });
  std::iota(load.order.begin(), load.order.end(), 0U);
  if (order == "LIFO")
    std::reverse(load.order.begin(), load.order.end());
  else if (order != "FIFO")
    std::shuffle(load.order.begin(), load.order.end(), random);
  load.blocks.resize(count);
  return load;
}

template <class Allocator>
void takeAll(Allocator& allocator, Load& load)
{
  for (std::size_t i = 0; i < load.blocks.size(); ++i)
  {
    void* block = allocator.take(load.sizes[i]);
    *static_cast<std::size_t*>(block) = i;
    load.blocks[i] = block;
  }
}

template <class Allocator>
double time(Allocator& allocator, Load& load)
{
  const auto replace = [&](unsigned at, unsigned with) {
    allocator.give(load.blocks[at], load.sizes[at]);
    load.sizes[at] = load.sizes[with];
    void* block = allocator.take(load.sizes[at]);
    *static_cast<std::size_t*>(block) = at;
    load.blocks[at] = block;
  };
  if (load.churns)
    takeAll(allocator, load);
  const double taken = seconds([&] {
    if (load.churns)
    {
      for (std::size_t i = 0; i < 2 * load.order.size(); ++i)
        replace(load.order[i % load.order.size()], load.order[(i + i / 3) % load.order.size()]);
      return;
    }
    takeAll(allocator, load);
    for (unsigned at : load.order)
      allocator.give(load.blocks[at], load.sizes[at]);
    allocator.end();
  });
  if (load.churns)
  {
    for (unsigned at : load.order)
      allocator.give(load.blocks[at], load.sizes[at]);
    allocator.end();
  }
  return taken;
}

// Without those of files: code that runs for the first time brings some in.
long residentPages()
{
  long size = 0, resident = 0, ofFiles = 0;
  std::ifstream("/proc/self/statm") >> size >> resident >> ofFiles;
  return resident - ofFiles;
}

// In a process of its own, whose memory is as yet in one piece. What is written is in no one else's page.
template <class Allocator>
double bytesPerBlock(unsigned size)
{
  constexpr unsigned kCount = 1000000;
  int ends[2];
  double result = 0;
  if (pipe(ends) != 0)
    return 0;
  const pid_t child = fork();
  if (child == 0)
  {
    Load load = makeLoad(size, "FIFO", kCount);
    Allocator allocator(size);
    load.blocks[0] = allocator.take(size);
    const long before = residentPages();
    for (unsigned each : load.sizes)
      std::memset(allocator.take(each), 1, each);
    result = double(residentPages() - before) * double(sysconf(_SC_PAGESIZE)) / kCount;
    _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
  }
  close(ends[1]);
  if (child < 0 || read(ends[0], &result, sizeof result) != sizeof result)
    result = 0;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return result;
}

template <class Allocator>
double growth(unsigned size, const std::string& order)
{
  double times[2] = {1e9, 1e9};
  for (int large : {0, 1})
  {
    Load load = makeLoad(size, order, large ? 1000000 : 1000);
    Allocator allocator(size);
    for (int i = 0; i < (large ? 4 : 400); ++i)
      times[large] = std::min(times[large], time(allocator, load));
  }
  return times[1] / times[0];
}

template <class Allocator>
void addCase(std::vector<Case>& cases, unsigned size, const std::string& order, const char* name, bool ours)
{
  const std::string table = (size == kMixed ? "mixed" : std::to_string(size)) + " " + order;
  cases.push_back({table, name, ours, 5, [=] {
                     static std::map<std::string, std::pair<std::unique_ptr<Allocator>, Load>> made;
                     auto& [allocator, load] = made[table];
                     if (!allocator)
                     {
                       allocator = std::make_unique<Allocator>(size);
                       load = makeLoad(size, order, 100000);
                       time(*allocator, load);
                     }
                     return time(*allocator, load);
                   }});
}

template <class Allocator>
void printGrowth(const char* name)
{
  std::printf("\n  %-14s", name);
  for (const char* order : {"LIFO", "FIFO", "random", "churn"})
  {
    for (unsigned size : {8U, kMixed})
    {
      const bool any = !std::is_same_v<Allocator, Fixed> && !std::is_same_v<Allocator, Compact>;
      if (size != kMixed || any)
        std::printf("%14.0f", growth<Allocator>(size, order));
      else
        std::printf("%14s", "");
    }
  }
}

template <class Allocator>
void printBytes(const char* name, bool any)
{
  std::printf("\n  %-14s", name);
  for (unsigned size : {8U, 24U, 32U, 100U, kMixed})
  {
    if (size != kMixed || any)
      std::printf("%10.2f", bytesPerBlock<Allocator>(size));
  }
}

void printTables()
{
  std::printf("bytes per live block    8        24        32       100     mixed");
  printBytes<Fixed>("fixed", false);
  printBytes<Compact>("compact", false);
  printBytes<Variant>("variant", true);
  printBytes<Stack>("stack", true);
  printBytes<Malloc>("malloc", true);
  printBytes<Mimalloc>("mimalloc", true);
  printBytes<Jemalloc>("jemalloc", true);
  printBytes<BoostPool>("boost pool", false);
  printBytes<PmrPool>("pmr pool", true);
  printBytes<PmrMonotonic>("pmr monotonic", true);
  std::printf("\n\n1,000,000 : 1,000    8 LIFO    mixed LIFO        8 FIFO    mixed FIFO      8 random  mixed random"
              "       8 churn   mixed churn");
  printGrowth<Fixed>("fixed");
  printGrowth<Compact>("compact");
  printGrowth<Variant>("variant");
  printGrowth<Malloc>("malloc");
  printGrowth<Mimalloc>("mimalloc");
  std::printf("\n");
}

} // namespace

int main(int argc, char** argv)
{
  if (argc == 1)
    printTables();
  std::vector<Case> cases;
  std::vector<Aim> aims;
  for (unsigned size : {8U, 24U, 32U, 100U, kMixed})
  {
    for (const char* order : {"LIFO", "FIFO", "random", "churn"})
    {
      const bool one = size != kMixed;
      if (one)
      {
        addCase<Fixed>(cases, size, order, "fixed", true);
        addCase<Compact>(cases, size, order, "compact", true);
      }
      addCase<Variant>(cases, size, order, "variant", true);
      const bool churns = std::string(order) == "churn";
      if (!churns)
        addCase<Stack>(cases, size, order, "stack", true);
      addCase<Malloc>(cases, size, order, "malloc", false);
      addCase<Mimalloc>(cases, size, order, "mimalloc", false);
      addCase<Jemalloc>(cases, size, order, "jemalloc", false);
      if (one)
        addCase<BoostPool>(cases, size, order, "boost pool", false);
      addCase<PmrPool>(cases, size, order, "pmr pool", false);
      if (!churns)
        addCase<PmrMonotonic>(cases, size, order, "pmr monotonic", false);
      const std::string table = cases.back().table;
      for (const char* ours : {"fixed", "compact"})
      {
        aims.push_back({table, ours, "malloc", 1 / 3.0});
        aims.push_back({table, ours, "boost pool", 1});
        aims.push_back({table, ours, "pmr pool", 1});
      }
      if (!one)
        aims.push_back({table, "variant", "malloc", 1});
    }
  }
  return runRatios(argc, argv, cases, aims);
}
