/// \file
/// Tstring: the library's owning string, one pointer wide, copied by sharing and split off on the first write.
///
/// Use it for every text that is kept, passed on or edited; use TcharString where somebody else owns the text. A copy
/// is one pointer and one increment and never allocates; the first write to a shared text copies it; later writes are
/// in place while the buffer has room. The trap: a pointer into the text (asC, begin, end, string_view) ends with the
/// next change of the string, and with the last string that shares the text.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstdarg>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <type_traits>
#include <utility>

class Tstring;
class TstringArray;
class TstringId;

template <class Text>
using TisOtherText =
  std::enable_if_t<std::is_convertible_v<const Text&, std::string_view> && !std::is_base_of_v<Tstring, Text>, int>;

/// A shared, counted, zero-terminated text of bytes.
///
/// \code
///   Tstring name("left arm");
///   Tstring copy = name;              // shares the text
///   copy.substitute("left", "right"); // splits it off: name is unchanged
///   copy += ".001";
///   if (copy.matches("right*"))
///     std::cout << copy << '\n';
/// \endcode
///
/// An empty string is a null pointer or an empty buffer and reads as "". Positions count bytes from 0. A null argument
/// stands for "" unless a function says otherwise. An argument may be, or point into, the string's own text.
///
/// Errors: no operation throws. When memory runs out, or a size does not fit 32 bits, the string is left empty and the
/// operation returns what it always returns. Functions that return a long return 0.
///
/// Threads: the share count is a plain integer, so strings that share a text belong to one thread.
///
/// Two rules fix a buffer's size in bytes: a fresh one for n characters has (n + 35) / 20 * 20, one that grows or
/// shrinks in place (n + 20) & ~3. Of both, 12 are the header and the capacity is the size - 16. The block behind it
/// may be longer, so that most growth moves nothing.
class FOUNDATION_API Tstring
{
public:
  /// The header of a buffer. The characters follow it, and a zero follows them.
  struct FOUNDATION_API TstringData
  {
    TuInt32 fCount = 1;  ///< strings that share the buffer
    TuInt32 fLength = 0; ///< bytes in use
    TuInt32 fCapacity;   ///< bytes available, beside the zero

    explicit TstringData(TuInt32 capacity) noexcept
      : fCapacity(capacity)
    {
    }

    char* text() noexcept { return reinterpret_cast<char*>(this + 1); }

    /// A fresh buffer for \p n characters, with an empty text; null when there is no memory.
    static TstringData* create(std::size_t n) noexcept;

    /// A fresh buffer that holds that text.
    static TstringData* create(const char* text, std::size_t length) noexcept;

    /// Makes \p data an unshared buffer with room for \p n characters. \p keep 1 keeps its text; 0 empties it where
    /// the buffer is replaced. Leaves null when there is no memory.
    static void grow(TstringData*& data, std::size_t n, unsigned char keep) noexcept;

    /// The same for a \p data that is not null.
    static void growRealloc(TstringData*& data, std::size_t n, unsigned char keep) noexcept;

    /// Makes \p data, which is not null, an unshared buffer with room for just \p n characters, and cuts a longer text
    /// there. \p keep 0 empties it. Leaves null when there is no memory.
    static void shrink(TstringData*& data, std::size_t n, unsigned char keep) noexcept;

    /// Gives up one share, and with the last one the buffer. Leaves null.
    static void destroy(TstringData*& data) noexcept;
  };

  // Construction and assignment

  Tstring() noexcept = default;
  Tstring(const char* text) noexcept
    : Tstring(view(text))
  {
  }
  Tstring(const char* text, unsigned long length) noexcept
    : fData(text && length != 0 ? TstringData::create(text, length) : nullptr)
  {
  }
  explicit Tstring(std::string_view text) noexcept
    : fData(text.empty() ? nullptr : TstringData::create(text.data(), text.size()))
  {
  }
  Tstring(const TstringId& id) noexcept { set(id); }
  Tstring(const Tstring& other) noexcept
    : fData(other.fData)
  {
    if (fData)
      ++fData->fCount;
  }
  Tstring(Tstring&& other) noexcept
    : fData(std::exchange(other.fData, nullptr))
  {
  }
  ~Tstring()
  {
    if (fData)
      TstringData::destroy(fData);
  }

  /// An empty string with room for \p capacity characters; without a buffer when that is not positive.
  template <class Number, std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool> &&
                                             !std::is_same_v<Number, char> && !std::is_same_v<Number, wchar_t>,
                                           int> = 0>
  explicit Tstring(Number capacity) noexcept
    : fData(capacity > 0
              ? TstringData::create(std::is_same_v<Number, std::size_t> || capacity < 0x7FFFFFFF ? std::size_t(capacity)
                                                                                                 : ~std::size_t(0))
              : nullptr)
  {
  }

  Tstring& operator=(const Tstring& other) noexcept
  {
    Tstring(other).swap(*this);
    return *this;
  }
  Tstring& operator=(Tstring&& other) noexcept
  {
    Tstring(std::move(other)).swap(*this);
    return *this;
  }
  Tstring& operator=(const char* text) noexcept { return set(text), *this; }
  Tstring& operator=(const TstringId& id) noexcept { return set(id), *this; }

  void swap(Tstring& other) noexcept { std::swap(fData, other.fData); }
  friend void swap(Tstring& left, Tstring& right) noexcept { left.swap(right); }

  /// Take over a text: a string's by sharing it, any other by copying it.
  long set(const char* text) noexcept;
  long set(const char* text, unsigned long length) noexcept;
  long set(const Tstring& other) noexcept;
  long set(const TstringId& id) noexcept;
  long set(std::string_view text) noexcept;
  long copy(const char* text) noexcept { return set(text); }
  long copy(const char* text, unsigned long length) noexcept { return set(text, length); }
  long copy(const Tstring& other) noexcept { return set(other); }
  long copy(const TstringId& id) noexcept { return set(id); }
  long copyChar(const char* text) noexcept { return set(text); }
  long copyChar(const char* text, unsigned long length) noexcept { return set(text, length); }
  long copyChar(const Tstring& other) noexcept { return set(other); }
  long copyChar(const TstringId& id) noexcept { return set(id); }

  /// Write a number in decimal. A double gets \p precision significant digits; 0 stands for 6, as without it, and a
  /// negative one leaves the choice to the C library.
  void setInt32(long value) noexcept;
  void setUInt32(unsigned long value) noexcept;
  void setDouble(double value) noexcept { setDouble(value, 0); }
  void setDouble(double value, long precision) noexcept;

  /// Write \p pattern with its conversions filled in from what follows, as by printf, into \p result. One thing
  /// differs: every conversion of a double is "%- W.Plg" with the pattern's width W, if it has one, and its precision P
  /// (6 without one).
  static void format(Tstring* result, const char* pattern, ...) noexcept FOUNDATION_PRINTF(2, 3);
  static void vformat(Tstring* result, const char* pattern, va_list arguments) noexcept FOUNDATION_PRINTF(2, 0);

  // Length and access

  unsigned long length() const noexcept { return fData ? fData->fLength : 0; }
  unsigned long size() const noexcept { return length(); }
  bool empty() const noexcept { return length() == 0; }

  /// The text; never null.
  const char* asC() const noexcept { return fData ? fData->text() : ""; }
  const char* string() const noexcept { return asC(); }
  const char* operator*() const noexcept { return asC(); }
  operator std::string_view() const noexcept
  {
    return fData ? std::string_view(fData->text(), fData->fLength) : std::string_view();
  }

  /// Null without a buffer, not two "" that need not be the same one.
  const char* begin() const noexcept { return fData ? fData->text() : nullptr; }
  const char* end() const noexcept { return fData ? fData->text() + fData->fLength : nullptr; }

  /// The byte at \p i; 0 from the length on.
  char operator[](unsigned long i) const noexcept { return i < length() ? fData->text()[i] : '\0'; }

  /// The text with its length, up to 255, in the byte before it. It stays until the next call in the process.
  const unsigned char* asPascal() const noexcept;

  /// Makes the buffer unshared and \p capacity characters wide at least. \p keep 0 may drop the text.
  void reserve(unsigned int capacity, unsigned char keep = 1) noexcept;

  /// Makes the buffer unshared and \p capacity characters wide, and cuts a longer text there. A shared text that is
  /// made no wider gets a buffer for its own length at most.
  void resize(unsigned long capacity) noexcept;

  /// Gives back the room that the text does not need. A shared text is split off.
  void shrink() noexcept { resize(length()); }

  /// Empties the string. An unshared buffer is kept for the next text.
  void clear() noexcept;

  // Appending. To append nothing changes nothing and splits nothing off. Constant on average per byte.

  long append(const Tstring& text) noexcept { return append(text.asC(), text.length()); }
  long append(const TstringId& id) noexcept;
  long append(const char* text) noexcept;
  long append(const char* text, unsigned long length) noexcept;
  long append(char c) noexcept
  {
    if (!fData || fData->fCount > 1)
      return append(&c, 1);
    const TuInt32 length = fData->fLength;
    if (length == fData->fCapacity)
    {
      // Blocks end at multiples of 32 bytes; before that the next growth, by 4, asks for no other. Compiled into users
      // of the library: it cannot change without them.
      if (length <= 24 || length % 32 == 16)
        return append(&c, 1);
      fData->fCapacity = length + 4;
    }
    char* const end = fData->text() + length;
    fData->fLength = length + 1;
    end[0] = c;
    end[1] = '\0';
    return 0;
  }
  long append(std::string_view text) noexcept { return append(text.data(), static_cast<unsigned long>(text.size())); }
  long catenate(const Tstring& text) noexcept { return append(text); }
  long catenate(const TstringId& id) noexcept { return append(id); }
  long catenate(const char* text) noexcept { return append(text); }
  long catenate(const char* text, unsigned long length) noexcept { return append(text, length); }
  long catenate(char c) noexcept { return append(c); }
  long appendChar(const Tstring& text) noexcept { return append(text); }
  long appendChar(const TstringId& id) noexcept { return append(id); }
  long appendChar(const char* text) noexcept { return append(text); }
  long appendChar(const char* text, unsigned long length) noexcept { return append(text, length); }
  long appendChar(char c) noexcept { return append(c); }
  long appendSpace() noexcept { return append(' '); }
  long appendNewline() noexcept { return append('\n'); }
  Tstring& operator+=(const Tstring& text) noexcept { return append(text), *this; }
  Tstring& operator+=(const TstringId& id) noexcept { return append(id), *this; }
  Tstring& operator+=(const char* text) noexcept { return append(text), *this; }
  Tstring& operator+=(std::string_view text) noexcept { return append(text), *this; }
  Tstring& operator+=(char c) noexcept { return append(c), *this; }
  friend Tstring operator+(const Tstring& left, const Tstring& right) noexcept { return joined(left, right); }
  friend Tstring operator+(const Tstring& left, const char* right) noexcept { return joined(left, view(right)); }

  // Comparison

  /// -1, 0 or 1: byte by byte, as unsigned values; then the shorter one is less.
  int compare(const Tstring& other) const noexcept { return compared(*this, other); }
  int compare(const char* other) const noexcept { return compared(*this, view(other)); }
  int compare(std::string_view other) const noexcept { return compared(*this, other); }

  /// Below, at or above 0 in the current locale's order, upper and lower case being the same.
  int caseCompare(const Tstring& other) const noexcept { return caseCompare(other.asC()); }
  int caseCompare(const char* other) const noexcept;

  friend bool operator==(const Tstring& left, const Tstring& right) noexcept
  {
    return left.fData == right.fData || std::string_view(left) == std::string_view(right);
  }
  friend bool operator!=(const Tstring& left, const Tstring& right) noexcept { return !(left == right); }
  friend bool operator<(const Tstring& left, const Tstring& right) noexcept { return compared(left, right) < 0; }
  friend bool operator<=(const Tstring& left, const Tstring& right) noexcept { return compared(left, right) <= 0; }
  friend bool operator>(const Tstring& left, const Tstring& right) noexcept { return compared(left, right) > 0; }
  friend bool operator>=(const Tstring& left, const Tstring& right) noexcept { return compared(left, right) >= 0; }

  // With texts of other classes, on either side; a null `const char*` is "".
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator==(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) == 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator!=(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) != 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator<(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) < 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator<=(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) <= 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator>(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) > 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator>=(const Tstring& left, const Text& right) noexcept
  {
    return left.compare(right) >= 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator==(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) == 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator!=(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) != 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator<(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) > 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator<=(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) >= 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator>(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) < 0;
  }
  template <class Text, TisOtherText<Text> = 0>
  friend bool operator>=(const Text& left, const Tstring& right) noexcept
  {
    return right.compare(left) <= 0;
  }

  /// The hash of the library's own tables: h = h << 1 ^ byte, sign-extended, over the text; then h ^ h >> 10 ^ h >> 20.
  /// 0xFFFFFFFF for an empty string. std::hash is that of the string_view.
  TuInt32 hash() const noexcept;

  // Search. The position found, -1 without one. At C library speed; findstr on Windows in the product of the lengths at
  // worst.

  long index(char c, unsigned long start = 0) const noexcept;
  long findchr(char c) const noexcept { return index(c); }

  /// The last one, at \p last or before it.
  long rindex(char c, unsigned long last = ~0UL) const noexcept;
  long findrchr(char c) const noexcept { return rindex(c); }

  /// 0 for an empty \p text in a string that is not empty.
  long findstr(const Tstring& text) const noexcept;

  /// Whether there is a '*' or '?'.
  bool isWildCard() const noexcept;

  // Substrings. Both ends belong to them; a \p last beyond the end is the end. A whole text is shared.

  void substring(unsigned long first, unsigned long last, Tstring& result) const noexcept;
  Tstring substring(unsigned long first, unsigned long last) const noexcept;

  /// Appends to \p pieces what stands between separators, without the empty pieces.
  long split(char separator, TstringArray& pieces) const;

  // Editing. A shared text is split off only when something changes. White space and case are the current locale's.

  void removeSpaces() noexcept;                ///< drops all white space
  void removeInitialAndFinalSpaces() noexcept; ///< drops ' ' at both ends, no other white space
  void collapseWhiteSpace() noexcept;          ///< makes white space one ' ', and at both ends nothing
  void capitalize() noexcept;                  ///< raises the first character
  void toUpperCase() noexcept;
  void toLowerCase() noexcept;

  /// Replaces \p from by \p to, from left to right, without looking into what it has put in. An empty \p from changes
  /// nothing.
  long substitute(const Tstring& from, const Tstring& to) noexcept;

  /// Reads escapes as C does: \\a \\b \\f \\n \\r \\t \\v, up to three octal digits, \\x and up to two hexadecimal
  /// digits. Before any other character a '\\' is dropped; at the end of the text it stays.
  void decodeEscapeSequences() noexcept;

  /// Writes control characters, quotes and '\\' as escapes, and if \p all is not 0 the bytes above 126 as well, so that
  /// decodeEscapeSequences restores the text.
  void encodeEscapeSequences(unsigned char all) noexcept;

  // Paths, with '/'

  Tstring extension() const noexcept;      ///< behind the last '.'; "" without one
  Tstring root() const noexcept;           ///< before the last '.'; all without one
  void root(const Tstring& path) noexcept; ///< becomes the root of \p path
  void stripExtension() noexcept;          ///< cuts at the last '.'
  void stripPath() noexcept { *this = baseName(); }
  Tstring baseName() const noexcept;      ///< as POSIX basename: "b" of "/a/b/", "/" of "//", "." of ""
  Tstring directoryPath() const noexcept; ///< as POSIX dirname: "/a" of "/a/b/", "." of "b" and of ""

  // Numbers. What cannot be read as one is 0; what is beyond the range of 32 bits is the end of that range.

  Tint32 asInt32() const noexcept;
  Tint16 asInt16() const noexcept;   ///< the low 16 bits of asInt32
  TuInt32 asUInt32() const noexcept; ///< a number with '-' counts back from 2^32
  float asFloat() const noexcept;
  double asDouble() const noexcept;

  /// Whether the text, but for blanks and tabs at its ends, is such a number: digits with a sign or without; for
  /// UInt32 without '-'; for a double what strtod reads. The range is not looked at.
  bool isInt32() const noexcept;
  bool isInt16() const noexcept { return isInt32(); }
  bool isUInt32() const noexcept;
  bool isDouble() const noexcept;
  bool isFloat() const noexcept { return isDouble(); }

  // Patterns

  /// Whether \p pattern describes the whole text: '?' is any character, '*' any number of any, and '\\' takes what
  /// follows as it is. A null \p pattern describes the empty string, and an empty one describes no string at all.
  bool matches(const char* pattern) const noexcept;
  bool matches(const Tstring& pattern) const noexcept { return matches(pattern.asC()); }

  /// Whether the extended POSIX regular expression \p pattern describes the text. It is taken as "^pattern$", of which
  /// alternatives need parentheses of their own, unless it begins with '^' or ends with '$'. Each capture that is not
  /// null gets the text of its parentheses, in order, and "" when they took no part. A pattern that is no expression,
  /// or nests more than 256 parentheses, describes nothing.
  bool matchesRegexp(const char* pattern, Tstring* capture1 = nullptr, Tstring* capture2 = nullptr,
                     Tstring* capture3 = nullptr, Tstring* capture4 = nullptr, Tstring* capture5 = nullptr,
                     Tstring* capture6 = nullptr, Tstring* capture7 = nullptr, Tstring* capture8 = nullptr,
                     Tstring* capture9 = nullptr) const noexcept;

private:
  static std::string_view view(const char* text) noexcept { return text ? std::string_view(text) : std::string_view(); }
  static int compared(std::string_view left, std::string_view right) noexcept
  {
    const int order = left.compare(right);
    return (order > 0) - (order < 0);
  }
  static Tstring joined(std::string_view left, std::string_view right) noexcept;

  TstringData* data() const noexcept { return length() ? fData : nullptr; }
  void assign(const char* text, std::size_t length) noexcept;
  std::size_t offsetOf(const char* text) const noexcept;
  char* writable() noexcept;
  void change(unsigned long count, char (*convert)(char)) noexcept;

  TstringData* fData = nullptr;
};

FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Tstring& text);

namespace std {

template <>
struct hash<Tstring>
{
  size_t operator()(const Tstring& text) const noexcept { return hash<string_view>()(text); }
};

} // namespace std

static_assert(sizeof(Tstring) == sizeof(void*), "a Tstring is exactly one pointer");
static_assert(sizeof(Tstring::TstringData) == 12, "the characters begin behind three 32-bit words");
