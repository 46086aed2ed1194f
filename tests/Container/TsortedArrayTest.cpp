#include "tests/Container/Checked.h"

#include "Foundation/Container/SortedArrays.h"
#include "Foundation/Container/StringArrays.h"

#include <algorithm>

namespace {

template <class X>
class SortedArray : public testing::Test
{
};
using Elements = testing::Types<double, TuInt16, Words12, Tstring, Counted>;
TYPED_TEST_SUITE(SortedArray, Elements);

TYPED_TEST(SortedArray, doesWhatASortedVectorDoes)
{
  using X = TypeParam;
  const int alive = Counted::gAlive;
  std::mt19937 random(3);
  for (const bool duplicates : {false, true})
  {
    TtypedSortedArray<X> array(duplicates, 3);
    std::vector<X> model;
    for (int step = 0; step < 3000; ++step)
    {
      const unsigned int length = array.length();
      const unsigned int index = unsigned(random() % (length + 2));
      const X fresh = made<X>(int(random() % 50));
      const X& value = index < length && step % 3 == 0 ? array[index] : fresh;
      const X copy = value;
      const auto [first, behind] = std::equal_range(model.begin(), model.end(), copy);
      const bool there = first != behind;
      const unsigned int place = unsigned(first - model.begin());
      unsigned int from = 99, to = 99;
      ASSERT_EQ(array.find(value, from), there ? 0 : -1);
      ASSERT_EQ(from, place);
      ASSERT_EQ(array.find(value, from, to), there ? 0 : -1);
      ASSERT_EQ(from, place);
      ASSERT_EQ(to, there ? unsigned(behind - model.begin()) - 1 : place);
      switch (random() % 5)
      {
      case 0:
      case 1:
        ASSERT_EQ(array.insert(value), there && !duplicates ? -1 : 0);
        if (!there || duplicates)
          model.insert(first, copy);
        break;
      case 2:
        if (length < 25)
          break;
        ASSERT_EQ(array.remove(value), there ? 0 : -1);
        if (there)
          model.erase(first);
        break;
      case 3:
      {
        const bool refused = index >= length || (there && !duplicates && index != place);
        ASSERT_EQ(array.change(index, value), refused ? -1 : 0);
        if (!refused)
        {
          model[index] = copy;
          std::sort(model.begin(), model.end());
        }
        break;
      }
      default:
      {
        TtypedSortedArray<X> other(!duplicates);
        other = array;
        std::vector<X> unique = model;
        unique.erase(std::unique(unique.begin(), unique.end()), unique.end());
        ASSERT_TRUE(other.validate());
        expectEqual(other, unique.size() < model.size() ? unique : model);
        array = TtypedSortedArray<X>(array);
      }
      }
      ASSERT_TRUE(array.validate());
      expectEqual(array, model);
    }
  }
  EXPECT_EQ(Counted::gAlive, alive);
}

TEST(TsortedArray, trustsAGivenPlaceUntilSorted)
{
  TdoubleSortedArray array(true, 4);
  array.addLast(3.0);
  array.addLast(1.0);
  array.insert(2.0, 100);
  EXPECT_FALSE(array.validate());
  array.sort();
  EXPECT_TRUE(array.validate());
  array.insert(2.0);
  EXPECT_TRUE(std::equal(array.begin(), array.end(), std::vector{1.0, 2.0, 2.0, 3.0}.begin()));
  TdoubleSortedArray unique(false);
  unique.addLast(1.0);
  unique.addLast(1.0);
  EXPECT_FALSE(unique.validate());
}

} // namespace
