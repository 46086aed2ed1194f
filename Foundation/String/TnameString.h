/// \file
/// TnameString: the text of a name, ordered as people number things: "arm9" comes before "arm10".
///
/// It is the key of name dictionaries; use Tname to hold a name. The trap: it is a Tstring, but two of them compare by
/// strnumcmp, under which numbers of more than eight digits may be equal that are not the same.

#pragma once

#include "Foundation/String/Tstring.h"

/// A name: a base and, in the decimal digits at its end, a version number.
///
/// \code
///   const TnameString name("arm12");
///   name.baseString();            // "arm"
///   name.versionNumber();         // 12
///   name < TnameString("arm110"); // true
/// \endcode
class FOUNDATION_API TnameString : public Tstring
{
public:
  TnameString() noexcept = default;
  explicit TnameString(const char* text) noexcept
    : Tstring(text)
  {
  }
  explicit TnameString(const Tstring& text) noexcept
    : Tstring(text)
  {
  }

  /// The text without the digits at its end; the string shares it when there are none.
  Tstring baseString() const noexcept;
  std::string_view baseView() const noexcept;

  /// The digits at the end of the text as a number; 0 without any, 4294967295 when it is that or more.
  TuInt32 versionNumber() const noexcept;

  /// Below, at or above 0 as \p a comes before, with or after \p b. They are read side by side:
  ///
  /// - Where both have a digit from '1' to '9', a number begins. Its last eight digits decide, each in 4 bits of a
  ///   32-bit number; then how many digits it has.
  /// - Else the characters decide, as signed values. So a '0' comes before any number.
  ///
  /// The result is the difference of the two that decided, as far as an int holds it. Null stands for "".
  static int strnumcmp(const char* a, const char* b) noexcept;

  // By strnumcmp. With a text of another class names compare as texts do.

  friend bool operator==(const TnameString& left, const TnameString& right) noexcept { return order(left, right) == 0; }
  friend bool operator!=(const TnameString& left, const TnameString& right) noexcept { return order(left, right) != 0; }
  friend bool operator<(const TnameString& left, const TnameString& right) noexcept { return order(left, right) < 0; }
  friend bool operator<=(const TnameString& left, const TnameString& right) noexcept { return order(left, right) <= 0; }
  friend bool operator>(const TnameString& left, const TnameString& right) noexcept { return order(left, right) > 0; }
  friend bool operator>=(const TnameString& left, const TnameString& right) noexcept { return order(left, right) >= 0; }

private:
  static int order(const TnameString& left, const TnameString& right) noexcept
  {
    return strnumcmp(left.asC(), right.asC());
  }
};
