#include "tests/Container/Checked.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Container/Tstack.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Math/TdoubleRange.h"
#include "Foundation/Math/TportColor.h"
#include "Foundation/Math/Trect.h"
#include "Foundation/Memory/TfootprintInfo.h"
#include "Foundation/String/TfilePath.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <sstream>

namespace {

template <class X>
using ArrayOf = std::conditional_t<std::is_trivially_copyable_v<X>, TtypedArray<X>, TtypedObjArray<X>>;

template <class X>
class TypedArray : public testing::Test
{
};
using Elements = testing::Types<TuInt8, Bytes3, Tint16, Tint32, float, double, Words12, Quad32, Tstring, Counted>;
TYPED_TEST_SUITE(TypedArray, Elements);

// Indices and counts reach beyond the end, and values are often elements of the array itself.
TYPED_TEST(TypedArray, doesWhatAVectorDoes)
{
  using X = TypeParam;
  const int alive = Counted::gAlive;
  std::mt19937 random(7);
  const auto below = [&random](std::size_t n) { return unsigned(random() % n); };
  {
    ArrayOf<X> array(3), other(5);
    std::vector<X> model, otherModel;
    for (int step = 0; step < 6000; ++step)
    {
      // Now and then large enough for mapped memory.
      if (array.length() > (step % 1000 < 900 ? 60U : 70000U / sizeof(X)))
        array.removeAt(7, UINT_MAX), model.resize(7);
      const unsigned int length = array.length();
      const unsigned int index = below(length + 3), count = below(length + 3);
      const unsigned int at = std::min(index, length), rest = std::min(count, length - at);
      const auto place = model.begin() + at, behind = place + rest;
      const X fresh = made<X>(step);
      const X& value = length != 0 && step % 2 ? array[below(length)] : fresh;
      const X copy = value;
      const std::vector<X> some(place, behind);
      const std::function<void()> changes[] = {
        [&] { array.addLast(value), model.push_back(copy); },
        [&] { array.insert(value, index), model.insert(place, copy); },
        [&] {
          array.insert(array.data() + at, rest, count);
          model.insert(model.begin() + std::min(count, length), some.begin(), some.end());
        },
        [&] { array.removeAt(index, count), model.erase(place, behind); },
        [&] {
          unsigned int found = 0;
          const auto there = std::find(model.begin(), model.end(), copy);
          ASSERT_EQ(array.find(value, found), there != model.end() ? 0 : 150);
          ASSERT_EQ(found, there - model.begin());
          ASSERT_EQ(array.remove(value), there != model.end() ? 0 : 150);
          if (there != model.end())
            model.erase(there);
        },
        [&] {
          array.copy(array, index, count), model = some;
          ASSERT_EQ(array.physicalSize(), rest);
        },
        [&] { array.catenate(array, index, count), model.insert(model.end(), some.begin(), some.end()); },
        [&] { std::swap(array, other), std::swap(model, otherModel); },
        [&] { array.createAndSet(value, step % 30, 2), model.assign(step % 30, copy); },
        [&] {
          array = ArrayOf<X>(array);
          array.changePhysicalSizeTo(count), model.resize(std::min(count, length));
        },
        [&] {
          void* buffer = nullptr;
          array.copyTo(&buffer);
          other.setArray(buffer, length, length), otherModel = model;
        },
        [&] {
          array.changeLogicalSizeBy(long(at) - long(length)), array.buffer(index), model.resize(at);
          ASSERT_GE(array.physicalSize(), at + index);
        },
        [&] {
          array.setArray(array.data(), at / 2, index), model.resize(at / 2);
          ASSERT_LE(array.physicalSize(), index);
        },
      };
      changes[below(std::size(changes))]();
      expectEqual(array, model);
      expectEqual(other, otherModel);
    }
    Tarray &untyped = other, &source = array; // which know nothing of elements
    untyped = source;
    expectEqual(other, model);
    source = std::move(static_cast<Tarray&>(other));
    expectEqual(array, model);
    other.create(4, 2);
    other.changeLogicalSizeTo(9);
    untyped.removeAt(2, 3);
    untyped.removeLast();
    EXPECT_EQ(other.length(), 5U);
    untyped.reset();
  }
  EXPECT_EQ(Counted::gAlive, alive);
}

TEST(Tarray, growsByStepsThatWiden)
{
  TdoubleArray array(4);
  TstringArray strings(4);
  const unsigned int figures[][3] = {{1, 4, 4}, {5, 8, 4}, {13, 16, 4}, {17, 20, 6}, {21, 26, 6}, {27, 32, 8}};
  for (const auto& [length, size, increment] : figures)
  {
    array.changeLogicalSizeTo(length);
    while (strings.length() < length)
      strings.addLast("");
    EXPECT_TRUE(array.physicalSize() == size && array.sizeIncrement() == increment) << length;
    EXPECT_TRUE(strings.physicalSize() == size && strings.sizeIncrement() == increment) << length;
  }
  TcharArray first(4);
  first.changeLogicalSizeTo(1000); // the first buffer leaves the step alone
  EXPECT_EQ(first.physicalSize() + first.sizeIncrement(), 1004U);
}

TEST(Tarray, refusesSizesThatDoNotFit)
{
  const Tint32 values[] = {1, 2, 3};
  Tint32Array array{1, 2, 3}, steps(UINT_MAX - 1);
  TtypedArray<Quad32> quads(4);
  TstringArray strings(4);
  const std::function<void()> changes[] = {
    [&] { array.insert(values, UINT_MAX - 2, 1); },
    [&] { array.buffer(0x40000000 - 3); }, // 4 GiB
    [&] { array.changeLogicalSizeTo(0x40000001); },
    [&] { array.changeLogicalSizeBy(LONG_MAX); },
    [&] { array.createAndSet(5, 0x40000000, 1); },
    [&] { array.setArray(nullptr, 0, 0x40000000); },
    [&] { steps.addLast(1); },
    [&] { quads.changeLogicalSizeTo(0x08000000); },
    [&] { strings.create(0x80000000, 1); },
    [&] { strings.changeLogicalSizeTo(UINT_MAX); },
    [&] { strings.addLast(nullptr, UINT_MAX); },
  };
  for (const auto& change : changes)
  {
    EXPECT_THROW(change(), TmemoryException) << &change - changes;
    expectEqual(array, std::vector<Tint32>(values, values + 3));
    EXPECT_EQ(array.sizeIncrement() + array.physicalSize(), 7U);
    EXPECT_TRUE(quads.validate() && strings.validate() && steps.validate());
    EXPECT_TRUE(quads.isEmpty() && strings.isEmpty() && steps.isEmpty());
  }
  array.changeLogicalSizeBy(LONG_MIN);
  EXPECT_EQ(array.length(), 0U);
}

// Every length up to some blocks of a search, every place in it.
TYPED_TEST(TypedArray, findsTheFirst)
{
  using X = TypeParam;
  ArrayOf<X> array;
  for (unsigned int length = 0; length < 150; ++length)
  {
    unsigned int index = 0;
    ASSERT_EQ(array.find(made<X>(1), index), 150);
    ASSERT_EQ(index, length);
    for (unsigned int place = 0; place < length; ++place)
    {
      array[place] = made<X>(1);
      array[length - 1] = made<X>(1);
      ASSERT_EQ(array.find(made<X>(1), index), 0);
      ASSERT_EQ(index, place);
      array[place] = array[length - 1] = made<X>(2);
    }
    array.addLast(made<X>(2));
  }
}

TEST(Tarray, findsBytesNotValues)
{
  const TdoubleArray array{0.0, -0.0, NAN};
  unsigned int index = 0;
  EXPECT_TRUE(array.find(-0.0, index) == 0 && index == 1 && array.find(NAN) == 0);
}

TEST(Tarray, movesAndHoldsBuiltInArrays)
{
  Tint32Array array{1, 2, 3};
  expectEqual(Tint32Array(std::move(array)), std::vector<Tint32>{1, 2, 3});
  EXPECT_TRUE(array.validate() && array.isEmpty()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
  const float triples[][3] = {{1, 2, 3}, {4, 5, 6}};
  TtypedArray<float[3]> builtIn(2);
  builtIn.addLast(triples, 2);
  for (int i = 0; i < 5; ++i)
    builtIn.addLast(builtIn[1]);
  unsigned int index = 0;
  EXPECT_EQ(builtIn.find(triples[1], index), 0);
  EXPECT_EQ(index, 1U);
  EXPECT_EQ(builtIn.last()[2], 6);
}

TEST(Tarray, takesBuffersOverOnBothSidesOfTheThreshold)
{
  TdoubleArray array(4);
  for (const unsigned int length : {8063U, 8064U})
  {
    array.createAndSet(1.5, length, 4);
    void* buffer = nullptr;
    array.copyTo(&buffer);
    array.setArray(buffer, length - 1, length);
    array.addLast(2.5);
    EXPECT_EQ(array.data(), buffer);
    array.changePhysicalSizeTo(16127 - length);
    EXPECT_EQ(array[8000], 1.5);
    EXPECT_TRUE(array.validate());
  }
  TfootprintInfo info;
  std::ostringstream text;
  Tarray::sGetArrayFootprint(&array, info, "doubles");
  Tarray::sGetArrayFootprint(nullptr, info, "doubles");
  text << info;
  EXPECT_NE(text.str().find("1          64504          64504  total\n"), std::string::npos) << text.str();
  array.setArray(Tarray::sAllocateBuffer(0), 0, 0);
  EXPECT_TRUE(array.validate() && array.isEmpty());
}

TEST(TstringArray, sharesAndLetsGo)
{
  const Tstring text("some text");
  const auto sharers = [&text] { return reinterpret_cast<const Tstring::TstringData*>(text.asC())[-1].fCount; };
  {
    TstringArray array(2);
    array.createAndSet(text, 20, 2);
    TstringArray copy = array;
    copy.removeAt(3, 10);
    copy[0].append("x");
    EXPECT_EQ(sharers(), 30U);
  }
  EXPECT_EQ(sharers(), 1U);
  TstringArray pieces(4);
  Tstring(",a,,b,").split(',', pieces);
  pieces.addLast("e f");
  pieces.last().split(' ', pieces); // an element of the array that grows
  expectEqual(pieces, std::vector<Tstring>{"a", "b", "e f", "e", "f"});
}

TEST(Tarray, holdsSmallValues)
{
  std::ostringstream text;
  const auto add = [&text](auto array, auto value) {
    array.addLast(value);
    text << array[0] << (array.find(value) == 0 ? ", " : " is lost, ");
  };
  add(TarrayTrect(), Trect(0, 0, 8, 8).intersection({4, 5, 9, 9}));
  add(TarrayTrect(), Trect().unionWith({1, 2, 3, 4}));
  add(TlineArray(), Tline(5, 1, 2, 3));
  add(TportColorArray(), TportColor(1, 2, 3, 4));
  add(TdoubleRangeArray(), TdoubleRange(1, 4).intersection({2, 5}));
  add(TscaleArray(), Tscale(2) * Tscale(1, 2, 3));
  add(TfilePathArray(), TfilePath("a/") / "b.c");
  EXPECT_EQ(text.str(), "[4 5 8 8], [1 2 3 4], [5 1 - 2 3], [1 2 3 4], [2 4], [2 4 6], a/b.c, ");
  EXPECT_EQ(std::hash<TdoubleRange>()({}), std::hash<TdoubleRange>()({2, 1})); // both are empty
  EXPECT_NE(std::hash<Tline>()({1, 2, 3, 4}), std::hash<Tline>()({3, 4, 1, 2}));
}

TEST(Tstack, givesBackInReverse)
{
  TtypedStack<double> stack;
  double value = 0, top = 0;
  for (int i = 0; i < 9; ++i)
    stack.push(i);
  while (stack.getTop(top))
    EXPECT_TRUE(stack.pop(value) && value == top && value == stack.length());
  EXPECT_FALSE(stack.pop(value));
}

} // namespace
