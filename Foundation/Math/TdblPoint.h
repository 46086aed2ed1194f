/// \file
/// TdblPoint, TfltPoint and Tpoint: points of a plane, in double and single precision and in whole pixels.
///
/// Use them for places on a screen and in parameter space. All operations are constexpr.

#pragma once

#include "Foundation/Math/GeometryTraits.h"

/// Two components with two names each: h and v, horizontal and vertical, or x and y. Both are 0 at first.
///
/// Tpoint holds short integers, which wrap, and is what OSpoint is another name of. It has no arithmetic beyond moves.
template <class Coordinate>
class TplanePointOf
{
  template <class C>
  using TrealOnly = std::enable_if_t<std::is_floating_point_v<C>>;
  template <class C>
  using TwholeOnly = std::enable_if_t<std::is_integral_v<C>>;

public:
  constexpr TplanePointOf() noexcept = default;
  constexpr TplanePointOf(Coordinate h, Coordinate v) noexcept
    : fComponents{h, v}
  {
  }

  constexpr Coordinate& h() noexcept { return fComponents[0]; }
  constexpr Coordinate& v() noexcept { return fComponents[1]; }
  constexpr Coordinate& x() noexcept { return fComponents[0]; }
  constexpr Coordinate& y() noexcept { return fComponents[1]; }
  constexpr const Coordinate& h() const noexcept { return fComponents[0]; }
  constexpr const Coordinate& v() const noexcept { return fComponents[1]; }
  constexpr const Coordinate& x() const noexcept { return fComponents[0]; }
  constexpr const Coordinate& y() const noexcept { return fComponents[1]; }

  /// The component at \p index, which is not checked.
  constexpr Coordinate& operator[](unsigned int index) noexcept { return fComponents[index]; }
  constexpr Coordinate operator[](unsigned int index) const noexcept { return fComponents[index]; }

  /// Both components, h first.
  constexpr Coordinate* array() noexcept { return fComponents; }
  constexpr const Coordinate* array() const noexcept { return fComponents; }

  constexpr void set(Coordinate h, Coordinate v) noexcept { *this = TplanePointOf(h, v); }
  constexpr void moveTo(Coordinate h, Coordinate v) noexcept { set(h, v); }
  constexpr void moveTo(const TplanePointOf& p) noexcept { *this = p; }

  /// By a distance.
  constexpr void move(Coordinate dx, Coordinate dy) noexcept { set(Coordinate(x() + dx), Coordinate(y() + dy)); }

  template <class C = Coordinate, class = TrealOnly<C>>
  constexpr TplanePointOf& operator+=(const TplanePointOf& p) noexcept
  {
    move(p.x(), p.y());
    return *this;
  }
  template <class C = Coordinate, class = TrealOnly<C>>
  constexpr TplanePointOf& operator-=(const TplanePointOf& p) noexcept
  {
    move(-p.x(), -p.y());
    return *this;
  }

  constexpr bool operator==(const TplanePointOf& p) const noexcept { return x() == p.x() && y() == p.y(); }
  constexpr bool operator!=(const TplanePointOf& p) const noexcept { return !(*this == p); }

  /// Whether both components differ by less than \p tolerance: p lies in a box, not in a disc.
  template <class C = Coordinate, class = TrealOnly<C>>
  constexpr bool equivalent(const TplanePointOf& p, const Coordinate& tolerance) const noexcept
  {
    return Tcomponents::magnitude(double(x()) - p.x()) < tolerance &&
           Tcomponents::magnitude(double(y()) - p.y()) < tolerance;
  }

  /// Whether both are the same pixel.
  template <class C = Coordinate, class = TwholeOnly<C>>
  constexpr bool intersects(const TplanePointOf& p) const noexcept
  {
    return *this == p;
  }

  friend std::ostream& operator<<(std::ostream& out, const TplanePointOf& p)
  {
    return Tcomponents::write(out, p.fComponents, 2);
  }

private:
  Coordinate fComponents[2] = {};
};

template <class Coordinate>
struct std::hash<TplanePointOf<Coordinate>> : TcomponentHash<TplanePointOf<Coordinate>, Coordinate, 2>
{
};

static_assert(sizeof(TdblPoint) == 16 && sizeof(TfltPoint) == 8 && sizeof(Tpoint) == 4, "a point is its components");
