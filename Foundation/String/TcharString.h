/// \file
/// TcharString: a constant, zero-terminated text that somebody else owns, in the order in which people read.
///
/// Use it as a cheap key or parameter where the text outlives the object: class names, literals. Use Tstring to own a
/// text. A copy costs a pointer, a comparison a collation. The trap: it keeps the address, not the characters.

#pragma once

#include "Foundation/Platform/Export.h"

#include <cstring>
#include <iosfwd>

/// A borrowed text; never null.
///
/// \code
///   TcharString name("Tdata");         // borrows the literal
///   if (name < TcharString("Tstring")) // by the locale's collation
///     std::cout << name << '\n';
/// \endcode
///
/// Order: one address is equal to itself; else the first characters decide, as signed char; else strcoll does. A sorted
/// container of these must not outlive a change of the locale.
class FOUNDATION_API TcharString
{
public:
  TcharString() noexcept = default;

  /// Borrows \p text, which must outlive this object and its copies. Null stands for "".
  TcharString(const char* text) noexcept { set(text); }

  void set(const char* text) noexcept { fText = text ? text : ""; }

  /// Borrows \p text and returns the address that is kept now.
  const char* operator=(const char* text) noexcept
  {
    set(text);
    return fText;
  }

  const char* asC() const noexcept { return fText; }

  /// Bytes before the zero, counted at each call.
  std::size_t length() const noexcept { return std::strlen(fText); }

  friend bool operator==(const TcharString& left, const TcharString& right) noexcept
  {
    return left.fText == right.fText || (*left.fText == *right.fText && std::strcoll(left.fText, right.fText) == 0);
  }
  friend bool operator<(const TcharString& left, const TcharString& right) noexcept
  {
    if (left.fText == right.fText)
      return false;
    const signed char l = static_cast<signed char>(*left.fText), r = static_cast<signed char>(*right.fText);
    return l != r ? l < r : std::strcoll(left.fText, right.fText) < 0;
  }
  friend bool operator!=(const TcharString& left, const TcharString& right) noexcept { return !(left == right); }
  friend bool operator>(const TcharString& left, const TcharString& right) noexcept { return right < left; }
  friend bool operator<=(const TcharString& left, const TcharString& right) noexcept { return !(right < left); }
  friend bool operator>=(const TcharString& left, const TcharString& right) noexcept { return !(left < right); }

private:
  const char* fText = "";
};

FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TcharString& text);

static_assert(sizeof(TcharString) == sizeof(const char*), "a TcharString is exactly one pointer");
