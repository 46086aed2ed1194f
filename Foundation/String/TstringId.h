/// \file
/// TstringId: a text that a user reads, as itself, as a number, or as a place in a catalogue of translations.
///
/// Pass one where a Tstring is set from or appended to. The text is looked up when it is asked for, not before.

#pragma once

#include "Foundation/String/Tstring.h"

#include <ostream>

/// Translations by number. A program derives from it and installs one object.
class FOUNDATION_API TstringCatalog
{
public:
  virtual ~TstringCatalog();

  /// Sets \p text to the text of \p id and returns true; or returns false when there is none.
  virtual bool find(TuInt32 id, Tstring& text) const = 0;

  /// Makes \p catalog the process's own, null none, and returns the one before. It is borrowed.
  static const TstringCatalog* install(const TstringCatalog* catalog) noexcept;

protected:
  TstringCatalog() = default;
  TstringCatalog(const TstringCatalog&) = default;
  TstringCatalog& operator=(const TstringCatalog&) = default;
};

/// A text, a number, or a number in the catalogue.
///
/// \code
///   Tstring title(TstringId::catalog(1207)); // what the installed catalogue says, else "1207"
///   title += TstringId(12);                  // "12"
/// \endcode
class FOUNDATION_API TstringId
{
public:
  TstringId() noexcept = default;
  explicit TstringId(Tstring text) noexcept
    : fText(std::move(text))
  {
  }
  explicit TstringId(const char* text) noexcept
    : fText(text)
  {
  }
  template <class Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
  explicit TstringId(Number id) noexcept
    : fId(TuInt32(id))
    , fKind(kNumber)
  {
  }

  /// The text that the installed catalogue has for \p id; the number without one.
  static TstringId catalog(TuInt32 id) noexcept
  {
    TstringId result(id);
    result.fKind = kCatalog;
    return result;
  }

  bool isNumeric() const noexcept { return fKind == kNumber; }
  bool isCatalog() const noexcept { return fKind == kCatalog; }

  /// The number; 0 for a text.
  TuInt32 id() const noexcept { return fId; }

  Tstring asString() const noexcept;

  friend bool operator==(const TstringId& left, const TstringId& right) noexcept
  {
    return left.fKind == right.fKind && left.fId == right.fId && left.fText == right.fText;
  }
  friend bool operator!=(const TstringId& left, const TstringId& right) noexcept { return !(left == right); }

private:
  friend struct std::hash<TstringId>;

  enum Tkind : unsigned char
  {
    kText,
    kNumber,
    kCatalog
  };

  Tstring fText;
  TuInt32 fId = 0;
  Tkind fKind = kText;
};

template <>
struct std::hash<TstringId>
{
  std::size_t operator()(const TstringId& id) const noexcept
  {
    return hash<Tstring>()(id.fText) + 31 * id.fId + id.fKind;
  }
};

/// The text that a user reads.
inline std::ostream& operator<<(std::ostream& out, const TstringId& id)
{
  return out << id.asString();
}
