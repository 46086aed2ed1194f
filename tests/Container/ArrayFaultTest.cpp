#include "tests/Container/Checked.h"
#include "tests/FailingMemory.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TmallocAllocator.h"

#include <functional>
#include <sstream>

namespace {

// Of every change, every single request fails in turn, once or from then on. arm(after, times) lets them fail,
// disarm() returns how many did.
template <class Array, class X, class Arm, class Disarm>
int failEveryChange(X value, std::initializer_list<unsigned int> lengths, Arm arm, Disarm disarm)
{
  const std::function<void(Array&)> changes[] = {
    [&](Array& array) { array.addLast(value); },
    [&](Array& array) { array.insert(array.data() + 1, 2, 2); },
    [&](Array& array) { array.catenate(array); },
    [&](Array& array) { array.copy(array, 1, array.length() / 2); },
    [&](Array& array) { array.createAndSet(value, 3 * array.length(), 2); },
    [&](Array& array) { array.create(10, 2); },
    [&](Array& array) { array.changeLogicalSizeTo(3 * array.length()); },
    [&](Array& array) { array.changePhysicalSizeTo(array.length() / 3); },
    [&](Array& array) { array.buffer(3 * array.length()); },
    [&](Array& array) { Array copy(array); }, // NOLINT(performance-unnecessary-copy-initialization)
  };
  int failures = 0;
  for (const unsigned int length : lengths)
  {
    for (const auto& change : changes)
    {
      for (int run = 0, failed = 1; failed != 0 || run % 2 != 0; ++run)
      {
        SCOPED_TRACE(testing::Message() << &change - changes << ", length " << length << ", run " << run);
        Array array(4);
        array.createAndSet(value, length, 4);
        array[length / 2] = X();
        const std::vector<X> model(array.begin(), array.end());
        bool threw = false;
        arm(run / 2, run % 2 != 0 ? INT_MAX : 1);
        try
        {
          change(array);
        }
        catch (const TmemoryException&)
        {
          threw = true;
        }
        failed = disarm();
        failures += threw;
        EXPECT_TRUE(!threw || failed != 0); // a mapped buffer does without its entry in the table of blocks
        EXPECT_TRUE(array.validate());
        if (threw)
          expectEqual(array, model);
      }
    }
  }
  return failures;
}

TEST(TobjArray, staysAsItWasWhenACopyFails)
{
  const int alive = Counted::gAlive;
  const auto arm = [](int after, int) { Counted::gCopiesLeft = after; };
  const auto disarm = [] { return int(std::exchange(Counted::gCopiesLeft, -1) == -2); };
  EXPECT_GE((failEveryChange<TtypedObjArray<Counted>>(Counted(5), {3, 30}, arm, disarm)), 80);
  EXPECT_EQ(Counted::gAlive, alive);
}

#if FAILING_MEMORY
TEST(Tarray, staysAsItWasWithoutMemory)
{
  const auto arm = [](int after, int times) {
    std::ostringstream out;
    TmallocAllocator::printStatistics(out); // after which no released pages are left to serve or to give back
    failAllocations(after, times);
  };
  const auto disarm = [] {
    const int failed = failedAllocations();
    failAllocations(0, 0);
    return failed;
  };
  // On both sides of the size from which buffers are mapped. Without failures the library asks somebody else.
  EXPECT_GE(failEveryChange<TdoubleArray>(1.5, {3, 8063, 8064, 20000}, arm, disarm), 50);
  EXPECT_GE(failEveryChange<TstringArray>(Tstring("text"), {3, 16000}, arm, disarm), 25);
}
#endif

} // namespace
