/// \file
/// The numbers in letters by their type, and how they are stored: big-endian, IEEE. Internal.

#pragma once

#include "Foundation/Data/NumberText.h"
#include "Foundation/Data/TargList.h"
#include "Foundation/Data/Tdata.h"
#include "Foundation/Data/TmetaLetter.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/String/Tstring.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <type_traits>

/// Calls \p function with a zero of the type.
template <class Function>
decltype(auto) withNumber(TnumberType type, Function&& function)
{
  switch (type)
  {
  // NOLINTNEXTLINE(bugprone-branch-clone): the types differ
  case TnumberType::kInt16: return function(Tint16());
  case TnumberType::kInt32: return function(Tint32());
  case TnumberType::kFloat: return function(float());
  default: return function(double());
  }
}

/// The unsigned type as wide as \p Number.
template <class Number>
using TbitsOf =
  std::conditional_t<sizeof(Number) == 2, TuInt16, std::conditional_t<sizeof(Number) == 4, TuInt32, TuInt64>>;

/// Puts the bytes of \p number at \p to, the most significant first, and returns the address behind them.
template <class Number>
char* putBigEndian(char* to, const Number& number) noexcept
{
  TuInt64 bits = std::bit_cast<TbitsOf<Number>>(number);
  for (std::size_t i = sizeof number; i-- > 0; bits >>= 8)
    to[i] = char(bits & 0xFF);
  return to + sizeof number;
}

/// Gets a number from there, and returns the address behind it.
template <class Number>
const char* getBigEndian(const char* from, Number& number) noexcept
{
  TuInt64 bits = 0;
  for (std::size_t i = 0; i < sizeof number; ++i)
    bits = bits << 8 | static_cast<unsigned char>(from[i]);
  number = std::bit_cast<Number>(TbitsOf<Number>(bits));
  return from + sizeof number;
}

/// A number as a double.
template <class Number>
void widen(const Number& from, double& to) noexcept
{
  to = double(from);
}

/// Of a NaN all bits; conversion would make a quiet one.
inline void widen(const float& from, double& to) noexcept
{
  to = double(from);
  if (std::isnan(from))
  {
    const TuInt32 bits = std::bit_cast<TuInt32>(from);
    to = std::bit_cast<double>(TuInt64(bits >> 31) << 63 | TuInt64(0x7FF) << 52 | TuInt64(bits & 0x7FFFFF) << 29);
  }
}

/// A double as a number, as near as can be. False when it is none of the type's: a fraction among whole numbers, or out
/// of range.
template <class Number>
bool narrow(const double& from, Number& to) noexcept
{
  to = Tdata::convertTo<Number>(from);
  return double(to) == from;
}
inline bool narrow(const double& from, double& to) noexcept
{
  to = from;
  return true;
}
inline bool narrow(const double& from, float& to) noexcept
{
  to = float(from);
  if (std::isnan(from))
  {
    const TuInt64 bits = std::bit_cast<TuInt64>(from);
    const TuInt32 payload = TuInt32(bits >> 29) & 0x7FFFFF;
    to = std::bit_cast<float>(TuInt32(bits >> 63) << 31 | 0x7F800000U | (payload != 0 ? payload : 0x400000U));
  }
  return std::isinf(to) == std::isinf(from);
}

/// A number as text that parseNumber(), then narrow() read back.
template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
std::string_view textOf(Integer value, Tdigits& digits) noexcept
{
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}
inline std::string_view textOf(const float& value, Tdigits& digits) noexcept
{
  // The shortest text for a float, unless it reads back as another one by way of a double.
  const std::string_view shortest(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
  double wide;
  float back;
  if (!std::isnan(value) && parseNumber(shortest, wide) && narrow(wide, back) && back == value)
    return shortest;
  widen(value, wide);
  return textOf(wide, digits);
}

/// Appends \p piece. Throws TmemoryException where the string would be emptied, and what comes next appended to that.
inline void appendPiece(Tstring& text, std::string_view piece)
{
  const std::size_t length = text.length() + piece.size();
  text.append(piece);
  if (text.length() != length)
    throw TmemoryException();
}

template <class Number>
void appendNumber(Tstring& text, const Number& value)
{
  Tdigits digits;
  appendPiece(text, textOf(value, digits));
}

/// Where the arguments end that a value from \p next on may take: \p count of them, or all when that is below 0.
inline unsigned int endOfArguments(const TargList& arguments, unsigned int next, long count)
{
  const unsigned int left = arguments.length() - std::min(next, arguments.length());
  return next + (count < 0 || static_cast<unsigned long>(count) > left ? left : unsigned(count));
}

/// A new letter of the kind that the argument at \p at names, which is passed over then; null when it names none.
/// Throws TmemoryException.
inline TdataLetter* namedLetter(const TargList& arguments, unsigned int& at)
{
  Tstring name;
  Tmetaclass* type = arguments.asString(at, name) ? TmetaLetter::findTypeid(name.asC()) : nullptr;
  if (!type)
    return nullptr;
  TdataLetter* letter = TdataLetter::construct(type);
  if (!letter)
    throw TmemoryException();
  ++at;
  return letter;
}

/// Appends what parts the value with the number \p i in a row from the one before.
inline void appendSeparator(Tstring& text, long perLine, unsigned int i)
{
  appendPiece(text, perLine > 0 && i % static_cast<unsigned long>(perLine) == 0 ? "\n" : " ");
}
