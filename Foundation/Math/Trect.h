/// \file
/// Trect and Tline: rectangles and lines in the coordinates of a drawing port, which grow to the right and downwards.

#pragma once

#include "Foundation/Container/Arrays.h"
#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Math/GeometryTraits.h"

#include <algorithm>
#include <ostream>

/// A rectangle of whole pixels, from left and top up to, but without, right and bottom.
///
/// \code
///   const Trect visible = Trect(0, 0, 640, 480).intersection(Trect(600, 400, 900, 700));
///   visible.width(); // 40
/// \endcode
class Trect
{
public:
  constexpr Trect() noexcept = default;
  constexpr Trect(short left, short top, short right, short bottom) noexcept
    : fLeft(left)
    , fTop(top)
    , fRight(right)
    , fBottom(bottom)
  {
  }

  constexpr short left() const noexcept { return fLeft; }
  constexpr short top() const noexcept { return fTop; }
  constexpr short right() const noexcept { return fRight; }
  constexpr short bottom() const noexcept { return fBottom; }

  /// Negative when the sides are the wrong way round.
  constexpr int width() const noexcept { return fRight - fLeft; }
  constexpr int height() const noexcept { return fBottom - fTop; }

  /// Whether it has no pixel.
  constexpr bool isEmpty() const noexcept { return fRight <= fLeft || fBottom <= fTop; }
  constexpr bool contains(short x, short y) const noexcept
  {
    return x >= fLeft && x < fRight && y >= fTop && y < fBottom;
  }

  /// The pixels in both; an empty rectangle when there are none.
  constexpr Trect intersection(const Trect& other) const noexcept
  {
    const Trect common(std::max(fLeft, other.fLeft), std::max(fTop, other.fTop), std::min(fRight, other.fRight),
                       std::min(fBottom, other.fBottom));
    return common.isEmpty() ? Trect() : common;
  }

  /// The smallest rectangle around both, of which empty ones do not count.
  constexpr Trect unionWith(const Trect& other) const noexcept
  {
    if (isEmpty() || other.isEmpty())
      return isEmpty() ? other : *this;
    return {std::min(fLeft, other.fLeft), std::min(fTop, other.fTop), std::max(fRight, other.fRight),
            std::max(fBottom, other.fBottom)};
  }

  constexpr bool operator==(const Trect& other) const noexcept
  {
    return fLeft == other.fLeft && fTop == other.fTop && fRight == other.fRight && fBottom == other.fBottom;
  }
  constexpr bool operator!=(const Trect& other) const noexcept { return !(*this == other); }

private:
  short fLeft = 0, fTop = 0, fRight = 0, fBottom = 0;
};

inline std::ostream& operator<<(std::ostream& out, const Trect& rect)
{
  return out << '[' << rect.left() << ' ' << rect.top() << ' ' << rect.right() << ' ' << rect.bottom() << ']';
}

template <>
struct std::hash<Trect>
{
  std::size_t operator()(const Trect& rect) const noexcept
  {
    const short sides[] = {rect.left(), rect.top(), rect.right(), rect.bottom()};
    return Tcomponents::hash(sides, 4);
  }
};

/// A line from one pixel to another.
class Tline
{
public:
  constexpr Tline() noexcept = default;
  constexpr Tline(short fromX, short fromY, short toX, short toY) noexcept
    : fFromX(fromX)
    , fFromY(fromY)
    , fToX(toX)
    , fToY(toY)
  {
  }

  constexpr short fromX() const noexcept { return fFromX; }
  constexpr short fromY() const noexcept { return fFromY; }
  constexpr short toX() const noexcept { return fToX; }
  constexpr short toY() const noexcept { return fToY; }

  /// The smallest rectangle that both ends lie in.
  constexpr Trect bounds() const noexcept
  {
    return {std::min(fFromX, fToX), std::min(fFromY, fToY), after(std::max(fFromX, fToX)),
            after(std::max(fFromY, fToY))};
  }

  /// The direction counts.
  constexpr bool operator==(const Tline& other) const noexcept
  {
    return fFromX == other.fFromX && fFromY == other.fFromY && fToX == other.fToX && fToY == other.fToY;
  }
  constexpr bool operator!=(const Tline& other) const noexcept { return !(*this == other); }

private:
  static constexpr short after(short last) noexcept { return short(std::min(last + 1, 32767)); }

  short fFromX = 0, fFromY = 0, fToX = 0, fToY = 0;
};

inline std::ostream& operator<<(std::ostream& out, const Tline& line)
{
  return out << '[' << line.fromX() << ' ' << line.fromY() << " - " << line.toX() << ' ' << line.toY() << ']';
}

template <>
struct std::hash<Tline>
{
  std::size_t operator()(const Tline& line) const noexcept
  {
    const short ends[] = {line.fromX(), line.fromY(), line.toX(), line.toY()};
    return Tcomponents::hash(ends, 4);
  }
};

// clang-format off
class TarrayTrect : public TtypedArray<Trect> { public: using TtypedArray::TtypedArray; };
class TlineArray : public TtypedArray<Tline> { public: using TtypedArray::TtypedArray; };
// clang-format on
