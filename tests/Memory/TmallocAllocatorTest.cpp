#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TresourceQuery.h"
#include "tests/Faults.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#ifdef __linux__
#  include <malloc.h>
#endif
#include <map>
#include <new>
#include <random>
#include <sstream>

namespace {

constexpr unsigned kLarge = 31744;
constexpr unsigned kSizes[] = {1, 100, kLarge - 1, kLarge, kLarge + 1, 300000, 5000000};
const std::string kRule = "====================================\n";

const TmmapEntry* recordOf(const void* block)
{
  return TmallocAllocator::open(nullptr)->find(block);
}

unsigned recordedSize(unsigned size)
{
  return size < kLarge ? size : (size + 15) / 16 * 16;
}

// Whether a block is recorded as it should be, and aligned.
bool isRecorded(const void* block, unsigned size, const char* tag)
{
  const TmmapEntry* record = recordOf(block);
  return record && record->fSize == recordedSize(size) && record->fTag == tag &&
         record->fMap == (size < kLarge ? nullptr : TmallocAllocator::mapZeroedMemory()) &&
         reinterpret_cast<std::uintptr_t>(block) % 8 == 0;
}

// Writes to a block what belongs to a number, or checks it.
void fill(void* block, unsigned size, unsigned number)
{
  for (unsigned i = 0; i < size; ++i)
    static_cast<unsigned char*>(block)[i] = static_cast<unsigned char>(i * 31 + number);
}

bool isFilled(const void* block, unsigned size, unsigned number)
{
  for (unsigned i = 0; i < size; ++i)
  {
    if (static_cast<const unsigned char*>(block)[i] != static_cast<unsigned char>(i * 31 + number))
      return false;
  }
  return true;
}

std::string statistics()
{
  std::ostringstream out;
  TmallocAllocator::printStatistics(out);
  return out.str();
}

std::string megabytes(double bytes, const std::string& name)
{
  char text[32];
  std::snprintf(text, sizeof text, "%8.3f Mb\t", bytes / 1000000);
  return text + name + "\n";
}

// With "#" for each number and the spaces before it.
std::string shape(const std::string& text)
{
  std::string result;
  for (const char c : text)
  {
    if ((c < '0' || c > '9') && c != '.')
      result += c;
    else if (result.empty() || result.back() != '#')
      result = result.substr(0, result.find_last_not_of(' ') + 1) + '#';
  }
  return result;
}

class Environment
{
public:
  explicit Environment(const char* name)
    : fName(name)
  {
    set("1");
  }
  ~Environment() { set(""); }

private:
  void set(const char* value) const
  {
#ifdef _WIN32
    _putenv_s(fName, value);
#else
    *value ? setenv(fName, value, 1) : unsetenv(fName);
#endif
  }
  const char* fName;
};

TEST(TmallocAllocator, drawsTheLineAtLargeBlocks)
{
  TmallocAllocator::setFreeMemory(1);
  TmallocAllocator::adjustFreeMemory(-100000000); // below the limit of 32 bits
  for (const unsigned size : kSizes)
  {
    const Tint32 free = TmallocAllocator::freeMemory();
    unsigned char* block = static_cast<unsigned char*>(mmapAlloc(size, "line"));
    EXPECT_TRUE(isRecorded(block, size, recordOf(block)->fTag)) << size;
    EXPECT_TRUE(size < kLarge || std::all_of(block, block + size, [](unsigned char byte) { return byte == 0; }));
    EXPECT_EQ(free - TmallocAllocator::freeMemory(), size < kLarge ? 0 : Tint32(recordedSize(size)));
    EXPECT_EQ(mmapFree(block), recordedSize(size));
    EXPECT_EQ(TmallocAllocator::freeMemory(), free);
    EXPECT_EQ(mmapFree(block), 0U); // no longer known
    EXPECT_EQ(mmapRealloc(block, 10, "line"), nullptr);
  }
  EXPECT_EQ(mmapAlloc(0, "line"), nullptr);
  EXPECT_EQ(mmapFree(nullptr), 0U);
  EXPECT_EQ(TmallocAllocator::pageAlign(16) + TmallocAllocator::pageAlign(17), 48U);
  TmallocAllocator& allocator = TmallocAllocator::process();
  void* block = allocator.allocate(8, nullptr);
  EXPECT_STREQ(recordOf(block)->fTag, "Render Arena");
  block = allocator.realloc(block, 80000, nullptr);
  EXPECT_STREQ(recordOf(block)->fTag, "");
  allocator.free(block, 0);
  EXPECT_EQ(recordOf(block), nullptr);
}

TEST(TmallocAllocator, reallocatesAcrossTheLine)
{
  const TuInt32 count = TmallocAllocator::open(nullptr)->entryCount();
  static const char kBefore[] = "before", kAfter[] = "after";
  for (const unsigned oldSize : kSizes)
  {
    for (const unsigned newSize : kSizes)
    {
      void* block = mmapRealloc(nullptr, oldSize, kBefore);
      fill(block, oldSize, newSize);
      void* moved = mmapRealloc(block, newSize, kAfter);
      EXPECT_TRUE(isRecorded(moved, newSize, kAfter)) << oldSize << " to " << newSize;
      EXPECT_TRUE(isFilled(moved, std::min(oldSize, newSize), newSize));
      EXPECT_TRUE(moved == block || !recordOf(block));
      fill(moved, newSize, 0);
      EXPECT_EQ(mmapRealloc(moved, 0, kAfter), nullptr);
    }
  }
  EXPECT_EQ(TmallocAllocator::open(nullptr)->entryCount(), count);
}

TEST(TmallocAllocator, tellsWhatMemoryIsUsedFor)
{
  // Two texts at several addresses, one the beginning of the other.
  const std::string tags[] = {"scene", "scene", "scenery", "scenery", "A"};
  std::map<std::string, double> held;
  std::map<void*, std::pair<unsigned, const std::string*>> blocks;
  std::mt19937 random(3);
  const auto statisticsOf = [](const std::string& all, const std::string& first) {
    const std::size_t place = all.find(first);
    return place == std::string::npos ? "missing" : all.substr(place, all.rfind(kRule) - place);
  };
  double large = 0, peak = 0;
  statistics(); // the peak begins anew
  for (int step = 0; step < 1000; ++step)
  {
    const std::string& tag = tags[random() % 5];
    const unsigned size = 1 + unsigned(random() % (random() % 2 ? 1000 : 100000));
    auto block = blocks.lower_bound(reinterpret_cast<void*>(std::uintptr_t(random()) << (sizeof(void*) > 4 ? 15 : 0)));
    void* old = block != blocks.end() && random() % 3 ? block->first : nullptr;
    if (old)
    {
      const auto [oldSize, oldTag] = block->second;
      EXPECT_TRUE(isFilled(old, oldSize, oldSize));
      held[*oldTag] -= recordedSize(oldSize);
      large -= oldSize < kLarge ? 0 : recordedSize(oldSize);
      blocks.erase(block);
    }
    if (old && random() % 2)
      mmapFree(old);
    else
    {
      void* made = mmapRealloc(old, size, tag.c_str());
      fill(made, size, size);
      blocks[made] = {size, &tag};
      held[tag] += recordedSize(size);
      large += size < kLarge ? 0 : recordedSize(size);
    }
    peak = std::max(peak, large);
    ASSERT_TRUE(TmallocAllocator::open(nullptr)->validate());
  }
  for (const bool again : {false, true})
  {
    std::string wanted;
    for (const auto& [tag, bytes] : held)
      wanted += megabytes(bytes, tag);
    const std::string all = statistics();
    EXPECT_EQ(statisticsOf(all, megabytes(held["A"], "A")), wanted);
    EXPECT_NE(all.find(megabytes(again ? large : peak, "Peak arena size")), std::string::npos) << all;
    std::string form = shape(all);
    for (const std::string sometimes : {"#\tPage faults\n", "# Mb\tMax resident size\n"})
    {
      if (form.find(sometimes) != std::string::npos)
        form.erase(form.find(sometimes), sometimes.size());
    }
    const std::string wantedForm =
      kRule + "# Mb\tPeak total size(Estimated)\n# Mb\tPeak arena size\n" + kRule + "# Mb\tCurrent\n";
    EXPECT_EQ(form.substr(0, wantedForm.size()), wantedForm);
    EXPECT_EQ(form.substr(form.size() - kRule.size()), kRule);
  }
  for (const auto& block : blocks)
    mmapFree(block.first);
}

TEST(TmallocAllocator, runsOutOfNumbers)
{
  testing::internal::CaptureStderr();
  void* block = mmapAlloc(40000, "kept");
  for (const unsigned size : {0xFFFFFFF1U, 0xFFFFFFFFU})
  {
    EXPECT_THROW(mmapAlloc(size, "too large"), TmemoryException);
    EXPECT_THROW(mmapRealloc(block, size, "too large"), TmemoryException);
    EXPECT_EQ(TmallocAllocator::pageAlign(size), 0U);
  }
  EXPECT_STREQ(recordOf(block)->fTag, "kept");
  {
    const Environment off("VEXA_NO_MEMORY_EXCEPTION");
    EXPECT_EQ(mmapAlloc(0xFFFFFFF1U, "too large"), nullptr);
    EXPECT_EQ(mmapRealloc(block, 0xFFFFFFF1U, "too large"), nullptr);
  }
  EXPECT_EQ(mmapFree(block), 40000U);
  const std::string report = testing::internal::GetCapturedStderr();
  std::size_t reports = 0;
  for (std::size_t at = 0; (at = report.find("4294.967 Mb\tSize of alloc\n", at)) != std::string::npos; ++at)
    ++reports;
  EXPECT_EQ(reports, 4U);
#ifndef __SANITIZE_ADDRESS__ // which ends the program for it
  volatile std::size_t most = SIZE_MAX - 10000;
  EXPECT_THROW(::operator delete(::operator new(most)), TmemoryException);
  EXPECT_EQ(::operator new(most, std::nothrow), nullptr);
#endif
}

TEST(TmallocAllocator, keepsAFile)
{
  const Scratch scratch;
  const std::string path = scratch.path("map");
  Tmmap* map = TmallocAllocator::mapDiskFile();
  TmallocAllocator::open(path.c_str());
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_GE(map->descriptor(), 0);
  EXPECT_EQ(map->fileName(), path);
  TmallocAllocator::open(scratch.write("other", "precious").c_str());
  EXPECT_EQ(map->fileName(), path); // since the other one exists
  TmallocAllocator::purge();
  TmallocAllocator::purge();
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(scratch.read("other"), "precious");
  EXPECT_TRUE(map->descriptor() < 0 && !map->fileName());
}

TEST(TmallocAllocator, printsItsFootPrint)
{
  void* block = mmapAlloc(123000, "foot");
  std::ostringstream before, out;
  TmallocAllocator::printFootPrint(before, nullptr);
  mmapFree(block);
  TmallocAllocator::printFootPrint(out, "Modeller");
  const std::string form = "# Mb\tHeap size\n# Mb\tLarge blocks\n# Mb\tMax resident size\n# Mb\tMaximum swap\n"
                           "# Mb\tLogical swap\n";
  EXPECT_EQ(shape(before.str()), form);
  EXPECT_EQ(shape(out.str()), "Modeller\n" + form);
  const auto largeBlocks = [](const std::string& text) {
    return std::stod(text.substr(text.find("Heap size\n") + 10));
  };
  EXPECT_NEAR(largeBlocks(before.str()) - largeBlocks(out.str()), 0.123, 0.0011);
}

TEST(TresourceQuery, seesWhatIsUsed)
{
  constexpr unsigned kSize = 50000000;
  const TuInt64 heap = TresourceQuery::heapSize(), faults = TresourceQuery::pageFaults();
  const TuInt64 tick = TresourceQuery::tickCount();
  void* block = mmapAlloc(kSize, "query");
  std::memset(block, 1, kSize);
  EXPECT_GE(TresourceQuery::heapSize(), heap + kSize * 9 / 10);
  EXPECT_GE(TresourceQuery::maxResidentSize(), kSize);
  EXPECT_TRUE(TresourceQuery::pageFaults() > faults || faults == 0); // Wine does not count them
  mmapFree(block);
  EXPECT_GE(TresourceQuery::tickCount(), tick);
  EXPECT_GT(TresourceQuery::freeMemory(), 0U);
  EXPECT_GE(TresourceQuery::maximumSwap(), TresourceQuery::freeSwap());
  EXPECT_GT(TresourceQuery::logicalSwap(), TresourceQuery::maximumSwap());
}

#ifdef CAN_REFUSE_MEMORY

// A system with so much free memory and swap, in kilobytes.
class System
{
public:
  System(long memory, long swap)
    : fPath(fScratch.write("meminfo", "MemTotal: 99 kB\nMemAvailable: " + std::to_string(memory) +
                                        " kB\nSwapTotal: " + std::to_string(swap) +
                                        " kB\nSwapFree: " + std::to_string(swap) + " kB\nCommitLimit: 999 kB\n"))
  {
    gMemoryInformation = fPath.c_str();
    TmallocAllocator::setFreeMemory(1);
  }
  ~System()
  {
    gMemoryInformation = nullptr;
    TmallocAllocator::setFreeMemory(1);
  }

private:
  const Scratch fScratch;
  const std::string fPath;
};

TEST(TmallocAllocator, estimatesFreeMemory)
{
  const struct
  {
    long memory, swap; // kilobytes
    Tint32 estimate;
  } cases[] = {{0, 0, 0},
               {10000, 240, 0},
               {10000, 241, 1024},
               {2100000, 7391, 0x7FFFFC00},
               {2100000, 7392, 0x7FFFFFFF},
               {90000000, 90000000, 0x7FFFFFFF}};
  for (const auto& each : cases)
  {
    const System system(each.memory, each.swap);
    EXPECT_EQ(TmallocAllocator::freeMemory(), each.estimate);
    EXPECT_EQ(TmallocAllocator::checkFreeMemory(each.estimate), 0);
    EXPECT_EQ(TmallocAllocator::checkFreeMemory(each.estimate - 1), 1);
    EXPECT_EQ(TmallocAllocator::adjustFreeMemory(-5), each.estimate - 5);
    EXPECT_EQ(TmallocAllocator::adjustFreeMemory(0x7FFFFFFF),
              each.estimate < 5 ? each.estimate + 0x7FFFFFFA : 0x7FFFFFFF);
    for (gSecondsAhead = 0; gSecondsAhead < 12; ++gSecondsAhead) // asked every second it still ages
      TmallocAllocator::setFreeMemory(0);
    gSecondsAhead = 0;
    EXPECT_EQ(TmallocAllocator::freeMemory(), each.estimate);
  }
  if (sizeof(void*) > 4) // more is free than the estimate can tell
  {
    const System system(90000000, 0);
    void* block = mmapAlloc(0x80000000U, "huge");
    EXPECT_EQ(mmapFree(block), 0x80000000U);
  }
}

TEST(TmallocAllocator, reportsLowMemory)
{
  void* small = mmapAlloc(100, "kept");
  void* large = mmapAlloc(kLarge, "kept");
  {
    const System system(10000, 240);
    testing::internal::CaptureStderr();
    EXPECT_THROW(mmapAlloc(1000000, "refused"), TmemoryException);
    const std::string report = testing::internal::GetCapturedStderr();
    const std::string wanted =
      kRule + "Cause of memory exception\n" + kRule + "  10.240 Mb\tFree Memory\n" +
      "   0.246 Mb\tFree Swap\n   1.000 Mb\tSize of alloc\n  10.486 Mb\tLow Memory Threshold\n" + kRule +
      "Memory use when exception was thrown\n" + kRule + kRule;
    EXPECT_EQ(report.substr(0, wanted.size()), wanted);
    EXPECT_NE(report.find(megabytes(100 + kLarge, "kept") + kRule, wanted.size()), std::string::npos) << report;

    testing::internal::CaptureStderr();
    EXPECT_THROW(mmapRealloc(small, kLarge, "refused"), TmemoryException);
    EXPECT_THROW(mmapRealloc(large, kLarge + 1, "refused"), TmemoryException);
    EXPECT_TRUE(isRecorded(small, 100, recordOf(small)->fTag) && isRecorded(large, kLarge, recordOf(large)->fTag));
    mmapFree(mmapAlloc(kLarge - 1, "small"));
    testing::internal::GetCapturedStderr();

    testing::internal::CaptureStderr();
    const Environment off("VEXA_NO_MEMORY_EXCEPTION");
    EXPECT_EQ(mmapFree(mmapAlloc(kLarge, "there is some after all")), kLarge);
    gRefusesMemory = [] { return true; };
    void* none = mmapAlloc(kLarge, "refused");
    void* neither = mmapRealloc(large, 2 * kLarge, "refused");
    gRefusesMemory = nullptr;
    EXPECT_TRUE(!none && !neither && isRecorded(large, kLarge, recordOf(large)->fTag));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "GlobalAlloc: Cannot allocate memory\nGlobalAlloc: Cannot allocate memory\n");
  }
  mmapFree(small);
  mmapFree(large);
}

// Each call either does all it should or throws and leaves everything as it was.
TEST(TmallocAllocator, livesWithoutMemory)
{
  static const char kTags[2][8] = {"before", "after"};
  const Tmmap& table = *TmallocAllocator::open(nullptr);
  const unsigned sizes[] = {100, 5000, kLarge, 100000};
  for (const unsigned oldSize : sizes)
  {
    for (const unsigned newSize : sizes)
    {
      failEveryAllocation([&](int first, bool onwards) {
        testing::internal::CaptureStderr();
        const TuInt32 count = table.entryCount();
        const Shortage* shortage = new Shortage(first, onwards);
        void* block = nullptr;
        void* moved = nullptr;
        try
        {
          block = mmapAlloc(oldSize, kTags[0]);
          fill(block, oldSize, 1);
          moved = mmapRealloc(block, newSize, kTags[1]);
        }
        catch (const TmemoryException&)
        {
        }
        const int struck = Shortage::struck();
        delete shortage;
        const std::string report = testing::internal::GetCapturedStderr();
        char unrecorded[64];
        std::snprintf(unrecorded, sizeof unrecorded, "Invalid entry in mmapAlloc %llx\n",
                      static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(block)));
        const bool large = !block ? oldSize >= kLarge : newSize >= kLarge;
        if (block && !recordOf(block) && !moved)
          EXPECT_EQ(report.substr(report.find("Invalid")), unrecorded);
        else
        {
          EXPECT_EQ(report.empty(), struck == 0 || !large || moved) << report;
          void* const left = moved ? moved : block;
          EXPECT_EQ(table.entryCount(), count + (left != nullptr));
          EXPECT_TRUE(!left || isRecorded(left, moved ? newSize : oldSize, kTags[moved != nullptr]));
          EXPECT_TRUE(!left || isFilled(left, std::min(oldSize, moved ? newSize : oldSize), 1));
          EXPECT_TRUE(moved || struck > 0);
          mmapFree(left);
        }
        EXPECT_EQ(table.entryCount(), count);
        EXPECT_TRUE(table.validate());
        return struck;
      });
    }
  }
}

TEST(TmallocAllocator, usesMallocWhenTold)
{
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process, which finds the variable when it loads the library
  const Environment on("VEXA_USE_MALLOC");
  const auto use = [] {
    void* block = mmapRealloc(mmapAlloc(100, "tag"), 100000, "tag");
    const bool good = TmallocAllocator::useMalloc() && !TmallocAllocator::open(nullptr) && block &&
                      malloc_usable_size(block) >= 100000 && mmapFree(block) == 0 &&
                      TmallocAllocator::pageAlign(17) == 17 && !TmallocAllocator::mapZeroedMemory() &&
                      statistics().find("Current\n" + kRule) != std::string::npos;
    gRefusesMemory = [] { return true; };
    try
    {
      mmapAlloc(40, "tag");
    }
    catch (const TmemoryException&)
    {
      std::_Exit(good ? 0 : 1);
    }
    std::_Exit(2);
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(0), "");
}

#endif

} // namespace
