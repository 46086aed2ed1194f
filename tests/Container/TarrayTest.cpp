#include "tests/Container/Checked.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Container/Tstack.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Memory/TfootprintInfo.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numeric>
#include <span>
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
      {
        array.removeAt(7, UINT_MAX);
        model.resize(7);
      }
      const unsigned int length = array.length();
      const unsigned int index = below(length + 3), count = below(length + 3);
      const unsigned int at = std::min(index, length), rest = std::min(count, length - at);
      const auto place = model.begin() + at, behind = place + rest;
      const X fresh = made<X>(step);
      const X& value = length != 0 && step % 2 ? array[below(length)] : fresh;
      const X copy = value;
      const std::vector<X> some(place, behind);
      switch (below(20))
      {
      case 0:
      case 1:
        array.addLast(value);
        model.push_back(copy);
        break;
      case 2:
      case 3:
        array.insert(value, index);
        model.insert(place, copy);
        break;
      case 4:
      {
        const unsigned int to = below(length + 1);
        array.insert(array.data() + at, rest, to);
        model.insert(model.begin() + to, some.begin(), some.end());
        break;
      }
      case 5:
        array.removeAt(index, count);
        model.erase(place, behind);
        break;
      case 6:
        array.removeLast(below(3));
        model.resize(array.length());
        break;
      case 7:
      case 8:
      {
        unsigned int found = 0;
        const auto there = std::find(model.begin(), model.end(), copy);
        ASSERT_EQ(array.find(value, found), there != model.end() ? 0 : 150);
        ASSERT_EQ(found, there - model.begin());
        ASSERT_EQ(array.remove(value), there != model.end() ? 0 : 150);
        if (there != model.end())
          model.erase(there);
        break;
      }
      case 9:
        array.copy(array, index, count);
        model = some;
        ASSERT_EQ(array.physicalSize(), rest);
        break;
      case 10:
        array.catenate(array, index, count);
        model.insert(model.end(), some.begin(), some.end());
        break;
      case 11:
        other.copy(array, count);
        otherModel.assign(model.begin(), model.begin() + std::min(count, length));
        break;
      case 12:
        array.catenate(other);
        model.insert(model.end(), otherModel.begin(), otherModel.end());
        break;
      case 13:
        std::swap(array, other);
        std::swap(model, otherModel);
        break;
      case 14:
        array.createAndSet(value, step % 30, 2);
        model.assign(step % 30, copy);
        break;
      case 15:
        array = ArrayOf<X>(array);
        array.pack();
        ASSERT_EQ(array.physicalSize(), length);
        break;
      case 16:
        array.changePhysicalSizeTo(count);
        model.resize(std::min(count, length));
        break;
      case 17:
        array.changeLogicalSizeBy(long(at) - long(length));
        model.resize(at);
        break;
      case 18:
      {
        void* buffer = nullptr;
        array.copyTo(&buffer);
        other.setArray(buffer, length, length);
        otherModel = model;
        break;
      }
      default: array.buffer(index); ASSERT_GE(array.physicalSize(), length + index);
      }
      expectEqual(array, model);
      expectEqual(other, otherModel);
    }
    other = array;
    expectEqual(other, model);
    other.changeLogicalSizeTo(0);
    EXPECT_TRUE(other.isEmpty());
    other.create(4, 2);
    other.changeLogicalSizeTo(9);
    EXPECT_EQ(other.length(), 9U);
    Tarray& untyped = other; // which knows nothing of elements
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
  const struct
  {
    unsigned int length, size, increment;
  } figures[] = {{1, 4, 4}, {5, 8, 4}, {9, 12, 4}, {13, 16, 4}, {17, 20, 6}, {21, 26, 6}, {24, 26, 6}, {27, 32, 8}};
  for (const auto& figure : figures)
  {
    while (array.length() < figure.length)
      array.addLast(1.0);
    EXPECT_EQ(array.physicalSize(), figure.size) << figure.length;
    EXPECT_EQ(array.sizeIncrement(), figure.increment) << figure.length;
  }
  TcharArray one(0);
  one.addLast('a');
  EXPECT_EQ(one.sizeIncrement(), 1U);
  EXPECT_EQ(one.physicalSize(), 1U);
  TcharArray first(4);
  first.changeLogicalSizeTo(1000); // the first buffer leaves the step alone
  EXPECT_EQ(first.physicalSize(), 1000U);
  EXPECT_EQ(first.sizeIncrement(), 4U);
  first.changeLogicalSizeTo(1001);
  EXPECT_EQ(first.physicalSize(), 1004U);
  EXPECT_EQ(first.sizeIncrement(), 6U);
  first.changeLogicalSizeTo(0);
  EXPECT_EQ(first.physicalSize(), 1004U);
  TcharArray wide(INT_MAX / 4);
  wide.createAndSet('x', 9, 100);
  EXPECT_EQ(wide.physicalSize(), 9U);
  EXPECT_EQ(wide.sizeIncrement(), 100U);
  wide.addLast('y');
  EXPECT_EQ(wide.physicalSize(), 109U);
}

TEST(Tarray, refusesSizesThatDoNotFit)
{
  const Tint32 values[] = {1, 2, 3};
  TuInt8Array bytes(4);
  TtypedArray<Quad32> quads(4);
  TtypedObjArray<Tstring> strings(4);
  Tint32Array steps(UINT_MAX - 1);
  Tint32Array array{1, 2, 3};
  const auto check = [&] {
    EXPECT_EQ(array.length() + array.sizeIncrement() + array.physicalSize(), 10U);
    EXPECT_TRUE(std::equal(array.begin(), array.end(), values));
    EXPECT_TRUE(bytes.validate() && bytes.isEmpty() && quads.validate() && quads.isEmpty());
    EXPECT_TRUE(strings.validate() && strings.isEmpty() && steps.validate() && steps.isEmpty());
  };
  EXPECT_THROW(array.insert(values, UINT_MAX - 2, 1), TmemoryException);
  EXPECT_THROW(array.addLast(values, UINT_MAX), TmemoryException);
  EXPECT_THROW(array.buffer(UINT_MAX), TmemoryException);
  EXPECT_THROW(array.buffer(0x40000000), TmemoryException); // 4 GiB and 12 bytes
  EXPECT_THROW(array.changeLogicalSizeTo(0x40000001), TmemoryException);
  EXPECT_THROW(array.changePhysicalSizeTo(UINT_MAX), TmemoryException);
  EXPECT_THROW(array.createAndSet(5, 0x40000000, 1), TmemoryException);
  EXPECT_THROW(array.create(0x80000000, 1), TmemoryException);
  EXPECT_THROW(array.setArray(nullptr, 0, 0x40000000), TmemoryException);
  EXPECT_THROW(array.changeLogicalSizeBy(LONG_MAX), TmemoryException);
  EXPECT_THROW(steps.addLast(1), TmemoryException);
  EXPECT_THROW(quads.changeLogicalSizeTo(0x08000000), TmemoryException);
  EXPECT_THROW(strings.create(0x80000000, 1), TmemoryException);
  EXPECT_THROW(strings.changeLogicalSizeTo(UINT_MAX), TmemoryException);
  EXPECT_THROW(strings.addLast(nullptr, UINT_MAX), TmemoryException);
  check();
  array.setSizeIncrement(UINT_MAX - 2);
  EXPECT_THROW(array.addLast(4), TmemoryException);
  EXPECT_EQ(array.sizeIncrement(), UINT_MAX - 2);
  array.setSizeIncrement(4);
  array.removeAt(3, UINT_MAX);
  array.removeAt(UINT_MAX, UINT_MAX);
  check();
  array.removeAt(1, UINT_MAX);
  EXPECT_EQ(array.length(), 1U);
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
  EXPECT_EQ(array.find(-0.0, index), 0);
  EXPECT_EQ(index, 1U);
  EXPECT_EQ(array.find(NAN), 0);
  EXPECT_EQ(Tint32Array().find(0, index), 150);
  EXPECT_EQ(index, 0U);
}

TEST(Tarray, worksWithTheStandardLibrary)
{
  Tint32Array array{3, 1, 2};
  std::sort(array.begin(), array.end());
  const std::span<const Tint32> span(array);
  EXPECT_TRUE(std::ranges::equal(span, std::vector{1, 2, 3}));
  static_assert(std::ranges::contiguous_range<Tint32Array> && std::ranges::sized_range<const Tint32Array>);
  Tint32 sum = 0;
  for (Tint32& value : array)
    sum += value *= 2;
  EXPECT_EQ(sum, 12);
  EXPECT_EQ(std::accumulate(array.begin(), array.end(), 0), 12);
  Tint32Array taken(std::move(array));
  EXPECT_EQ(taken.length(), 3U);
  EXPECT_TRUE(array.validate() && array.isEmpty()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(TuInt32Array(16).length(), 0U);
  EXPECT_EQ(TuInt32Array{16}.length(), 1U);
}

TEST(Tarray, holdsBuiltInArrays)
{
  using Triple = float[3];
  const Triple triples[] = {{1, 2, 3}, {4, 5, 6}};
  TtypedArray<Triple> array(2);
  array.addLast(triples, 2);
  for (int i = 0; i < 5; ++i)
    array.addLast(array[1]);
  array.insert(triples[0], 3);
  EXPECT_EQ(array.length(), 8U);
  EXPECT_EQ(array[3][1], 2);
  EXPECT_EQ(array.last()[2], 6);
  unsigned int index = 0;
  EXPECT_EQ(array.find(triples[1], index), 0);
  EXPECT_EQ(index, 1U);
}

TEST(Tarray, takesBuffersOverAndHandsCopiesOut)
{
  TdoubleArray array(4);
  for (const unsigned int length : {8063U, 8064U})
  {
    array.createAndSet(1.5, length, 4);
    void* buffer = nullptr;
    array.copyTo(&buffer);
    EXPECT_NE(buffer, array.data());
    array.setArray(buffer, length - 1, length);
    EXPECT_EQ(array.length(), length - 1);
    EXPECT_EQ(array.last(), 1.5);
    array.addLast(2.5);
    EXPECT_EQ(array.data(), buffer);
    array.setArray(array.data(), 2 * length, length); // its own
    EXPECT_EQ(array.length(), length);
    EXPECT_EQ(array.last(), 2.5);
    array.changePhysicalSizeTo(16127 - length); // to the other side of the threshold, or not
    EXPECT_EQ(array[8000], 1.5);
    EXPECT_TRUE(array.validate());
  }
  array.setArray(Tarray::sAllocateBuffer(0), 0, 0);
  EXPECT_TRUE(array.validate() && array.isEmpty());
  void* none = &array;
  array.copyTo(&none);
  EXPECT_EQ(none, nullptr);
}

TEST(Tarray, reportsItsFootprint)
{
  TdoubleArray array(4);
  array.addLast(1.0);
  TfootprintInfo info;
  Tarray::sGetArrayFootprint(&array, info, "doubles");
  Tarray::sGetArrayFootprint(nullptr, info, "doubles");
  Tarray::sGetArrayFootprint(&array, info, nullptr);
  Tarray::sGetArrayFootprint(&array, info, "doubles");
  ASSERT_EQ(info.entries().size(), 2U);
  EXPECT_EQ(info.entries()[0].objects, 2U);
  EXPECT_EQ(info.entries()[0].used, 16U);
  EXPECT_EQ(info.entries()[0].allocated, 64U);
  EXPECT_EQ(info.total().allocated, 96U);
  std::ostringstream text;
  text << info;
  EXPECT_NE(text.str().find("64  doubles\n"), std::string::npos);
}

TEST(Tstack, givesBackInReverse)
{
  struct Stack : Tstack
  {
    using Tstack::getTopElement;
    using Tstack::popElement;
    using Tstack::pushElement;
    using Tstack::Tstack;
    double* top() { return reinterpret_cast<double*>(address(length() - 1)); }
  } stack(sizeof(double));
  double value = 0;
  EXPECT_FALSE(stack.popElement(&value));
  EXPECT_FALSE(stack.getTopElement(&value));
  EXPECT_EQ(stack.pushElement(&value), 0);
  EXPECT_EQ(stack.physicalSize(), 4U);
  for (int i = 1; i < 9; ++i)
  {
    value = i;
    stack.pushElement(&value);
  }
  stack.pushElement(stack.top());
  for (const int expected : {8, 8, 7})
  {
    EXPECT_TRUE(stack.getTopElement(&value));
    EXPECT_EQ(value, expected);
    EXPECT_TRUE(stack.popElement(&value));
    EXPECT_EQ(value, expected);
  }
  EXPECT_EQ(stack.length(), 7U);
  stack.clear();
  EXPECT_TRUE(stack.isEmpty() && stack.validate());
}

} // namespace
