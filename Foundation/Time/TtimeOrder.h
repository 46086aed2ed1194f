/// \file
/// TtimeOrder: the comparisons that follow from two others.

#pragma once

/// Gives \p X, which derives from it and has == and <, the other four.
template <class X>
class TtimeOrder
{
  friend constexpr bool operator!=(const X& left, const X& right) noexcept { return !(left == right); }
  friend constexpr bool operator<=(const X& left, const X& right) noexcept { return left < right || left == right; }
  friend constexpr bool operator>(const X& left, const X& right) noexcept { return right < left; }
  friend constexpr bool operator>=(const X& left, const X& right) noexcept { return right <= left; }
};
