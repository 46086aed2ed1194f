#include "tests/Container/Checked.h"
#include "tests/FailingMemory.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Debug/Texception.h"

#include <climits>
#include <functional>
#include <optional>

#if FAILING_MEMORY
namespace {

// Of every change, every single allocation fails in turn, once or from then on. Lengths lie on both sides of the size
// from which buffers are mapped.
template <class Array, class X>
int failEveryChange(X value)
{
  using Change = std::function<void(Array&)>;
  std::optional<Array> made;
  const std::pair<const char*, Change> changes[] = {
    {"addLast", [&](Array& array) { array.addLast(value); }},
    {"insert", [&](Array& array) { array.insert(array.data(), array.length() / 2, 1); }},
    {"catenate", [&](Array& array) { array.catenate(array); }},
    {"copy a part", [&](Array& array) { array.copy(array, 1, array.length() / 2); }},
    {"createAndSet", [&](Array& array) { array.createAndSet(value, 9000, 2); }},
    {"create", [&](Array& array) { array.create(10, 2); }},
    {"grow", [&](Array& array) { array.changeLogicalSizeTo(3 * array.length()); }},
    {"shrink", [&](Array& array) { array.changePhysicalSizeTo(array.length() / 3); }},
    {"buffer", [&](Array& array) { array.buffer(9000); }},
    {"copy construction", [&](Array& array) { made.emplace(array); }},
    {"copyTo",
     [&](Array& array) {
       void* copy = nullptr;
       array.copyTo(&copy);
       made.emplace();
       made->setArray(copy, array.length(), array.length());
     }},
  };
  int failures = 0;
  for (const unsigned int length : {3U, 8063U, 8064U, 20000U})
  {
    for (const auto& [name, change] : changes)
    {
      for (const int times : {1, INT_MAX})
      {
        for (int after = 0, failed = 1; failed != 0; ++after)
        {
          SCOPED_TRACE(std::string(name) + ", length " + std::to_string(length) + ", after " + std::to_string(after));
          Array array(4);
          array.createAndSet(value, length, 4);
          array[length / 2] = X();
          const std::vector<X> model(array.begin(), array.end());
          bool threw = false;
          failAllocations(after, times);
          try
          {
            change(array);
          }
          catch (const TmemoryException&)
          {
            threw = true;
          }
          failed = failedAllocations();
          failAllocations(0, 0);
          failures += failed != 0;
          EXPECT_EQ(threw, failed != 0);
          EXPECT_TRUE(array.validate());
          if (threw)
          {
            expectEqual(array, model);
            EXPECT_EQ(array.physicalSize(), length);
            EXPECT_EQ(array.sizeIncrement(), 4U);
          }
          made.reset();
        }
      }
    }
  }
  return failures;
}

TEST(Tarray, staysAsItWasWithoutMemory)
{
  EXPECT_GE(failEveryChange<TdoubleArray>(1.5), 80); // else the library does not ask the tests for memory
  EXPECT_GE(failEveryChange<TstringArray>(Tstring("text")), 80);
}

} // namespace
#endif
