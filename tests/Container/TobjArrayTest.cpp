#include "tests/Container/Checked.h"

#include "Foundation/Container/StringArrays.h"

namespace {

// Every single copy throws in turn: all elements stay, and none is lost.
TEST(TobjArray, staysAsItWasWhenACopyThrows)
{
  using Array = TtypedObjArray<Counted>;
  const std::vector<std::function<void(Array&, const Counted*)>> changes = {
    [](Array& array, const Counted* values) { array.addLast(values[0]); },
    [](Array& array, const Counted* values) { array.insert(values, 3, 2); },
    [](Array& array, const Counted*) { array.insert(array.data() + 1, 3, 2); },
    [](Array& array, const Counted*) { array.catenate(array); },
    [](Array& array, const Counted*) { array.copy(array, 1, 3); },
    [](Array& array, const Counted* values) { array.createAndSet(values[0], 3, 1); },
    [](Array& array, const Counted*) { array.changePhysicalSizeTo(2); },
    [](Array& array, const Counted*) { array.changeLogicalSizeTo(20); },
    [](Array& array, const Counted*) { Array copy(array); },
  };
  const int alive = Counted::gAlive;
  for (const auto& change : changes)
  {
    for (const unsigned int spare : {0U, 9U})
    {
      const Counted values[] = {7, 8, 9};
      int copies = 0;
      for (bool threw = true; threw; ++copies)
      {
        Array array{1, 2, 3, 4, 5};
        array.changePhysicalSizeTo(5 + spare);
        const int before = Counted::gAlive;
        Counted::gCopiesLeft = copies;
        try
        {
          change(array, values);
          threw = false;
        }
        catch (int)
        {
          EXPECT_EQ(Counted::gAlive, before);
          expectEqual(array, std::vector<Counted>{1, 2, 3, 4, 5});
        }
        Counted::gCopiesLeft = -1;
      }
      EXPECT_GT(copies + int(spare), 1); // else nothing was copied
    }
  }
  EXPECT_EQ(Counted::gAlive, alive);
}

TEST(TstringArray, sharesAndLetsGo)
{
  const Tstring text("some text");
  const auto sharers = [&text] { return reinterpret_cast<const Tstring::TstringData*>(text.asC())[-1].fCount; };
  {
    TstringArray array(2);
    for (int i = 0; i < 20; ++i)
      array.addLast(text);
    EXPECT_EQ(sharers(), 21U);
    TstringArray copy = array;
    copy.catenate(array, 5);
    EXPECT_EQ(sharers(), 46U);
    copy.removeAt(3, 10);
    copy[0].append("x");
    EXPECT_EQ(sharers(), 35U);
    EXPECT_EQ(array[0], text);
    array = copy;
    EXPECT_EQ(sharers(), 29U);
    array.changeLogicalSizeTo(20);
    EXPECT_EQ(array.last(), "");
    array.setArray(nullptr, 0, 0);
    EXPECT_EQ(sharers(), 15U);
    TsortedStringArray sorted(true);
    for (const Tstring& each : copy)
      sorted.insert(each);
    sorted.remove(text);
    EXPECT_EQ(sharers(), 28U);
  }
  EXPECT_EQ(sharers(), 1U);
}

TEST(TstringArray, takesThePiecesOfASplit)
{
  TstringArray pieces(4);
  Tstring(",a,,b,").split(',', pieces);
  Tstring("cd").split(',', pieces);
  Tstring("").split(',', pieces);
  pieces.addLast("e f");
  pieces.last().split(' ', pieces); // an element of the array that grows
  expectEqual(pieces, std::vector<Tstring>{"a", "b", "cd", "e f", "e", "f"});
}

} // namespace
