#include "Foundation/Memory/TmallocAllocator.h"
#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Debug/TerrorHandler.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TresourceQuery.h"
#include "tests/Environment.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <new>
#include <random>
#include <sstream>

namespace {

constexpr unsigned kLarge = 31744;
const std::string kRule = "====================================\n";

unsigned recordedSize(unsigned size)
{
  return size < kLarge ? size : (size + 15) / 16 * 16;
}

bool isRecorded(const void* block, unsigned size, const char* tag)
{
  const TmmapEntry* record = TmallocAllocator::open(nullptr)->find(block);
  return record && record->fSize == recordedSize(size) && std::strcmp(record->fTag, tag) == 0 &&
         record->fMap == (size < kLarge ? nullptr : TmallocAllocator::mapZeroedMemory()) &&
         reinterpret_cast<std::uintptr_t>(block) % 8 == 0;
}

// Writes a pattern, or tells whether it is there.
void fill(void* block, unsigned size)
{
  for (unsigned i = 0; i < size; ++i)
    static_cast<unsigned char*>(block)[i] = static_cast<unsigned char>(i * 31 + 1);
}

bool isFilled(const void* block, unsigned size)
{
  const auto* bytes = static_cast<const unsigned char*>(block);
  return std::all_of(bytes, bytes + size,
                     [i = 0U](unsigned char byte) mutable { return byte == (i++ * 31 + 1) % 256; });
}

class Environment
{
public:
  explicit Environment(const char* name)
    : fName(name)
  {
    setVariable(name, "1");
  }
  ~Environment() { setVariable(fName, ""); }

private:
  const char* fName;
};

// Blocks on both sides of the line that come, grow, shrink and go in any order, among them such as grow into pages that
// others left, and within the last page of before.
TEST(TmallocAllocator, drawsTheLineAtLargeBlocks)
{
  struct Block
  {
    char* data = nullptr;
    unsigned size = 0;
  } blocks[12];
  constexpr unsigned kSizes[] = {0, 1, 100, kLarge - 1, kLarge, kLarge + 1, kLarge + 1000, 5000000};
  const TuInt32 count = TmallocAllocator::open(nullptr)->entryCount();
  std::mt19937 random(1);
  const auto large = [](unsigned size) { return size < kLarge ? 0 : Tint32(recordedSize(size)); };
  for (int step = 0; step < 2000; ++step)
  {
    Block& block = blocks[random() % std::size(blocks)];
    const unsigned size = step % 2 ? kSizes[random() % std::size(kSizes)] : kLarge + unsigned(random() % 400000);
    // The estimate is measured at every step, as it would be in between when it is five seconds old.
    TmallocAllocator::setFreeMemory(1);
    const Tint32 free = TmallocAllocator::adjustFreeMemory(-100000000); // below the limit of 32 bits
    block.data = static_cast<char*>(mmapRealloc(block.data, size, "pages"));
    const unsigned kept = std::min(size, block.size);
    ASSERT_TRUE(size == 0 ? !block.data : isRecorded(block.data, size, "pages")) << block.size << " to " << size;
    ASSERT_TRUE(isFilled(block.data, kept));
    const unsigned old = std::min(size, recordedSize(block.size)); // behind it the pages are new
    ASSERT_TRUE(size < kLarge || unsigned(std::count(block.data + old, block.data + size, '\0')) == size - old);
    ASSERT_EQ(free - TmallocAllocator::freeMemory(), large(size) - large(block.size));
    fill(block.data, block.size = size);
  }
  for (const Block& block : blocks)
  {
    TmallocAllocator::setFreeMemory(1);
    const Tint32 free = TmallocAllocator::adjustFreeMemory(-100000000);
    EXPECT_EQ(mmapFree(block.data), block.data ? recordedSize(block.size) : 0);
    EXPECT_EQ(TmallocAllocator::freeMemory() - free, large(block.size));
    EXPECT_TRUE(mmapFree(block.data) == 0 && !(block.data && mmapRealloc(block.data, 10, "unknown")));
  }
  TmallocAllocator& allocator = TmallocAllocator::process();
  void* block = allocator.realloc(allocator.allocate(8, nullptr), 80000, nullptr);
  EXPECT_TRUE(isRecorded(block, 80000, ""));
  allocator.free(block, 0);
  EXPECT_EQ(TmallocAllocator::open(nullptr)->entryCount(), count);
}

TEST(TmallocAllocator, tellsWhatMemoryIsUsedFor)
{
  const std::string scene = "scene", scenery = "scenery", other = "scene"; // equal texts at two addresses
  std::ostringstream first, second, third;
  TmallocAllocator::printStatistics(first); // the peak begins anew
  void* blocks[] = {mmapAlloc(1000, scenery.c_str()), mmapAlloc(7000, scene.c_str()), mmapAlloc(123000, other.c_str())};
  mmapFree(mmapAlloc(5000000, "A"));
  TmallocAllocator::printStatistics(second);
  TmallocAllocator::printStatistics(third);
  // Blocks that other tests lost for want of an entry in the table count as well.
  const auto peak = [](const std::ostringstream& report) {
    const std::string text = report.str(), line = " Mb\tPeak arena size\n" + kRule;
    return std::stod(text.substr(text.find(line) - 8));
  };
  EXPECT_NEAR(peak(second) - peak(third), 5, 0.002);
  EXPECT_NE(third.str().find(" Mb\tCurrent\n   0.130 Mb\tscene\n   0.001 Mb\tscenery\n" + kRule), std::string::npos);
  TstringArray lines;
  TmallocAllocator::getStatistics(lines);
  EXPECT_TRUE(lines.length() == 3 && lines[1] == "   0.130 Mb\tscene\n");
  for (void* block : blocks)
    mmapFree(block);
}

TEST(TmallocAllocator, runsOutOfNumbers)
{
  testing::internal::CaptureStderr();
  void* block = mmapAlloc(40000, "kept");
  for (const unsigned size : {0xFFFFFFF1U, 0xFFFFFFFFU})
  {
    EXPECT_THROW(mmapAlloc(size, "too large"), TmemoryException);
    EXPECT_THROW(mmapRealloc(block, size, "too large"), TmemoryException);
    const Environment off("VEXA_NO_MEMORY_EXCEPTION");
    EXPECT_TRUE(!mmapAlloc(size, "too large") && !mmapRealloc(block, size, "too large"));
  }
  EXPECT_TRUE(isRecorded(block, 40000, "kept"));
  mmapFree(block);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("4294.967 Mb\tSize of alloc\n"), std::string::npos);
#ifndef __SANITIZE_ADDRESS__ // which ends the program for it
  volatile std::size_t most = SIZE_MAX - 10000;
  EXPECT_THROW(::operator delete(::operator new(most)), TmemoryException);
#endif
}

TEST(TresourceQuery, seesWhatIsUsed)
{
  constexpr unsigned kSize = 50000000;
  const TuInt64 heap = TresourceQuery::heapSize(), faults = TresourceQuery::pageFaults();
  void* block = mmapAlloc(kSize, "query");
  std::memset(block, 1, kSize);
  EXPECT_GE(TresourceQuery::heapSize(), heap + kSize * 9 / 10);
  EXPECT_GE(TresourceQuery::maxResidentSize(), kSize);
  EXPECT_TRUE(TresourceQuery::pageFaults() > faults || faults == 0); // Wine does not count them
  mmapFree(block);
}

#if FAILING_MEMORY

// A system with so much free memory and swap, in kilobytes.
class System
{
public:
  System(long memory, long swap)
    : fPath(fScratch.write("meminfo", "MemAvailable: " + std::to_string(memory) + " kB\nSwapTotal: 99 kB\nSwapFree: " +
                                        std::to_string(swap) + " kB\nCommitLimit: 999 kB\n"))
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
  } cases[] = {
    {0, 0, 0}, {10000, 240, 0}, {10000, 241, 1024}, {2100000, 7391, 0x7FFFFC00}, {2100000, 7392, 0x7FFFFFFF}};
  for (const auto& each : cases)
  {
    const System system(each.memory, each.swap);
    EXPECT_EQ(TmallocAllocator::freeMemory(), each.estimate);
    EXPECT_EQ(TmallocAllocator::adjustFreeMemory(-5), each.estimate - 5);
    TmallocAllocator::adjustFreeMemory(0x7FFFFFFF);
    EXPECT_EQ(TmallocAllocator::adjustFreeMemory(9000), 0x7FFFFFFF);
    for (gSecondsAhead = 0; gSecondsAhead < 12; ++gSecondsAhead) // asked every second it still ages
      TmallocAllocator::setFreeMemory(0);
    gSecondsAhead = 0;
    EXPECT_EQ(TmallocAllocator::freeMemory(), each.estimate);
  }
  const System system(90000000, 0); // more is free than the estimate can tell
  EXPECT_TRUE(sizeof(void*) == 4 || mmapFree(mmapAlloc(0x80000000U, "huge")) == 0x80000000U);
}

TEST(TmallocAllocator, reportsLowMemory)
{
  struct Log : TerrorHandlerImplementation
  {
    void reportWarning(const Tstring*, const Tstring*) override {}
    void reportError(const Tstring* message, const Tstring*) override
    {
      fText += message->asC();
      mmapAlloc(kLarge, "handler"); // which throws, but keeps nothing from being reported
    }
    unsigned char setLogging(unsigned char) override { return 1; }
    std::string fText;
  } log;
  TerrorHandler handler;
  handler.setImplementation(&log);
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
    EXPECT_NE(report.find("   0.032 Mb\tkept\n" + kRule, wanted.size()), std::string::npos) << report;
    EXPECT_EQ(log.fText, "Free memory is low. Memory exception thrown");

    testing::internal::CaptureStderr();
    EXPECT_THROW(mmapRealloc(small, kLarge, "refused"), TmemoryException);
    EXPECT_THROW(mmapRealloc(large, kLarge + 1, "refused"), TmemoryException);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(mmapFree(mmapAlloc(kLarge - 1, "small")), kLarge - 1);

    testing::internal::CaptureStderr();
    const Environment off("VEXA_NO_MEMORY_EXCEPTION");
    EXPECT_EQ(mmapFree(mmapAlloc(kLarge, "there is some after all")), kLarge);
    failAllocations(0, INT_MAX);
    const bool none = !mmapAlloc(kLarge, "refused") && !mmapRealloc(large, 2 * kLarge, "refused");
    failAllocations(0, 0);
    EXPECT_TRUE(none && isRecorded(small, 100, "kept") && isRecorded(large, kLarge, "kept"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "GlobalAlloc: Cannot allocate memory\nGlobalAlloc: Cannot allocate memory\n");
  }
  mmapFree(small);
  mmapFree(large);
}

TEST(TmallocAllocator, keepsFewReleasedPagesUntilMemoryRunsLow)
{
  constexpr unsigned kBytes = 100000000, kMost = 16 << 20;
  std::ostringstream out;
  TmallocAllocator::printStatistics(out); // which gives pages back
  const Tint64 heap = Tint64(TresourceQuery::heapSize());
  const std::function<void()> needs[] = {
    [&out] { TmallocAllocator::printStatistics(out); },
    [] { mmapFree(mmapAlloc(kBytes, "large")); },
    [] { mmapFree(mmapAlloc(100, "small")); },
    [] { mmapFree(mmapRealloc(mmapAlloc(100, "small"), 5000, "small")); },
    [] { ::operator delete(::operator new(1000)); },
    [] { TdoubleArray(4).create(3000, 4); },
  };
  for (const auto& need : needs)
  {
    void* blocks[] = {mmapAlloc(kBytes, "kept"), mmapAlloc(50000, "kept"), mmapAlloc(kBytes, "kept")};
    for (void* block : blocks)
      mmapFree(block);
    EXPECT_NEAR(double(Tint64(TresourceQuery::heapSize()) - heap), kMost, 1000000);
    failAllocations(0, 1);
    EXPECT_NO_THROW(need());
    EXPECT_EQ(failedAllocations(), &need == needs ? 0 : 1) << &need - needs;
    failAllocations(0, 0);
  }
  TmallocAllocator::printStatistics(out);
  EXPECT_NEAR(double(Tint64(TresourceQuery::heapSize()) - heap), 0, 1000000);
}

// Each call either does all it should or throws and leaves everything as it was.
TEST(TmallocAllocator, livesWithoutMemory)
{
  const Tmmap& table = *TmallocAllocator::open(nullptr);
  const TuInt32 count = table.entryCount();
  char unrecorded[64] = "-";
  testing::internal::CaptureStderr();
  for (const unsigned oldSize : {100U, kLarge})
  {
    for (const unsigned newSize : {5000U, 100000U})
    {
      forEachFailingAllocation([&] {
        void *block = nullptr, *moved = nullptr;
        try
        {
          block = mmapAlloc(oldSize, "before");
          fill(block, oldSize);
          moved = mmapRealloc(block, newSize, "after");
        }
        catch (const TmemoryException&)
        {
        }
        void* const left = moved ? moved : block;
        EXPECT_TRUE(moved || failedAllocations() > 0);
        if (left && table.entryCount() == count) // there was no memory for the record
          std::snprintf(unrecorded, sizeof unrecorded, "Invalid entry in mmapAlloc %" PRIxPTR "\n",
                        reinterpret_cast<std::uintptr_t>(left));
        else if (left)
        {
          EXPECT_TRUE(isRecorded(left, moved ? newSize : oldSize, moved ? "after" : "before"));
          EXPECT_TRUE(isFilled(left, std::min(oldSize, moved ? newSize : oldSize)));
        }
        mmapFree(left);
        EXPECT_TRUE(table.entryCount() == count && table.validate());
      });
    }
  }
  EXPECT_NE(testing::internal::GetCapturedStderr().find(unrecorded), std::string::npos);
}

TEST(TmallocAllocator, usesMallocWhenTold)
{
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a new process, which finds the variable when it loads the library
  const Environment on("VEXA_USE_MALLOC");
  const auto use = [] {
    void* block = mmapRealloc(mmapAlloc(100, "tag"), 100000, "tag");
    const bool good = TmallocAllocator::useMalloc() && !TmallocAllocator::open(nullptr) && mmapFree(block) == 0 &&
                      TmallocAllocator::pageAlign(17) == 17;
    failAllocations(0, INT_MAX);
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
