#include "Foundation/Data/TdataNumbers.h"

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Data/Comparison.h"
#include "Foundation/Data/Components.h"
#include "Foundation/Iff/TiffFile.h"
#include "Foundation/Memory/TfootprintInfo.h"

#include <climits>

namespace {

// Applies the operation to each number with one of the others, \p step apart.
template <class Number, class Other>
void applyToEach(ToperationOnData operation, Number* number, unsigned int count, const Other* other, unsigned int step)
{
  const auto each = [=](auto apply) {
    for (std::size_t i = 0; i < count; ++i)
      number[i] = Tdata::convertTo<Number>(apply(double(number[i]), double(other[i * step])));
  };
  switch (operation)
  {
  case ToperationOnData::kAdd: return each([](double a, double b) { return a + b; });
  case ToperationOnData::kSubtract: return each([](double a, double b) { return a - b; });
  case ToperationOnData::kMultiply: return each([](double a, double b) { return a * b; });
  case ToperationOnData::kDivide: return each([](double a, double b) { return a / b; });
  }
}

// Calls \p function with the first number of a row, as what it is.
template <class Row, class Function>
decltype(auto) withNumbers(const Row& row, Function&& function)
{
  return withNumber(row.fType, [&](auto zero) { return function(static_cast<decltype(zero)*>(row.fFirst)); });
}

} // namespace

void TdataNumbers::_getFootprint(TfootprintInfo& info) const
{
  const Trow numbers = row();
  const TuInt64 bytes = withNumbers(numbers, [&](auto* first) { return TuInt64(sizeof *first) * numbers.fCount; });
  info.add(typeName(), sizeof *this + bytes, sizeof *this + bytes);
}

TorderOfData TdataNumbers::compare(const TdataLetter& other) const
{
  if (other.typeof() != typeof())
    return TorderOfData::kIncompatible;
  const Trow left = row(), right = static_cast<const TdataNumbers&>(other).row();
  const TorderOfData order = withNumbers(left, [&](auto* first) {
    const auto* second = static_cast<decltype(first)>(right.fFirst);
    for (unsigned int i = 0; i < std::min(left.fCount, right.fCount); ++i)
    {
      if (!(first[i] == second[i]))
        return orderOf(first[i], second[i]);
    }
    return orderOf(left.fCount, right.fCount);
  });
  if (!hasFixedLength())
    return order;
  return order == TorderOfData::kEqual ? TorderOfData::kSame : TorderOfData::kDifferent;
}

bool TdataNumbers::combine(ToperationOnData operation, const TdataLetter& other)
{
  if (other.typeof() != typeof())
    return false;
  const Trow left = row(), right = static_cast<const TdataNumbers&>(other).row();
  if (left.fCount != right.fCount)
    return false;
  withNumbers(left, [&](auto* first) {
    applyToEach(operation, first, left.fCount, static_cast<decltype(first)>(right.fFirst), 1);
  });
  return true;
}

bool TdataNumbers::scale(ToperationOnData operation, double number)
{
  if (operation == ToperationOnData::kAdd || operation == ToperationOnData::kSubtract)
    return false;
  const Trow numbers = row();
  withNumbers(numbers, [&](auto* first) { applyToEach(operation, first, numbers.fCount, &number, 0); });
  return true;
}

void TdataNumbers::appendText(Tstring& text, long perLine) const
{
  const Trow numbers = row();
  if (!hasFixedLength())
    appendNumber(text, numbers.fCount / step());
  withNumbers(numbers, [&](auto* first) {
    for (unsigned int i = 0; i < numbers.fCount; ++i)
    {
      if (i != 0 || !hasFixedLength())
        appendSeparator(text, perLine, i);
      appendNumber(text, first[i]);
    }
  });
}

long TdataNumbers::readASCII(TargList& arguments, unsigned int& next, long count)
{
  const unsigned int end = endOfArguments(arguments, next, count);
  unsigned int at = next;
  Tint32 steps = 1;
  if (!hasFixedLength() && !(at < end && arguments.asInt32(at++, steps)))
    return kFailed;
  if (steps < 0 || TuInt64(steps) * step() > end - at) // each number must be there
    return kFailed;
  return withNumber(row().fType, [&](auto zero) -> long {
    TtypedArray<decltype(zero)> numbers;
    numbers.changeLogicalSizeTo(unsigned(steps) * step());
    for (auto& number : numbers)
    {
      double value;
      if (!arguments.asDouble(at++, value) || !narrow(value, number))
        return kFailed;
    }
    setCount(numbers.length());
    std::copy(numbers.begin(), numbers.end(), static_cast<decltype(zero)*>(row().fFirst));
    next = at;
    return 0;
  });
}

long TdataNumbers::readBinary(TiffTag tag, unsigned long& size, void*& data)
{
  return withNumber(row().fType, [&](auto zero) -> long {
    const unsigned long length = size / sizeof zero;
    if (tag != iffTag() || size % sizeof zero != 0 || length % step() != 0 || length > UINT_MAX ||
        (hasFixedLength() && length != step()))
      return kFailed;
    setCount(unsigned(length));
    auto* number = static_cast<decltype(zero)*>(row().fFirst);
    const char* from = static_cast<const char*>(data);
    for (unsigned long i = 0; i < length; ++i)
      from = getBigEndian(from, number[i]);
    data = static_cast<char*>(data) + size;
    size = 0;
    return 0;
  });
}

long TdataNumbers::writeBinary(TiffFile& file)
{
  const Trow numbers = row();
  return withNumbers(numbers, [&](auto* first) -> long {
    const std::size_t size = numbers.fCount * sizeof *first;
    if (size > INT_MAX)
      return file.putChunk(iffTag(), -1, nullptr); // refused, as any size that no chunk can have
    TcharArray bytes;
    bytes.changeLogicalSizeTo(unsigned(size));
    char* to = bytes.data();
    for (unsigned int i = 0; i < numbers.fCount; ++i)
      to = putBigEndian(to, first[i]);
    return file.putChunk(iffTag(), Tint32(bytes.length()), bytes.data());
  });
}
