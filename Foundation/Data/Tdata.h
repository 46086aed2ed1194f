/// \file
/// Tdata: a value of any kind: a number, a time, a shared letter, or none (NULL).
///
/// Use it where the kind is known at run time only: attributes, arguments, the contents of files. A handle is 16 bytes;
/// numbers and times live in it, and copying a letter's handle costs an increment. The main trap: handles on one letter
/// share it. What the writer among them changes, the others see; copy a letter to be rid of that.
///
///     offset   bytes   what
///     0        4       bit 0 a number, 1 a time, 2 from cache, 3 holder
///     8        8       the double; the ticks, in the first 4; or the letter, null for NULL

#pragma once

#include "Foundation/Container/TtypedArray.h"
#include "Foundation/Data/TdataLetter.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/Time/TanimTime.h"

#include <cstddef>
#include <iosfwd>
#include <limits>
#include <type_traits>
#include <utility>

/// A value. 0.0 at first.
///
/// \code
///   Tdata weight = 0.25, key = TanimTime(12, kTime24Fps);
///   Tdata corner(new Tdata3Double(1, 2, 3));
///   Tdata same = corner;                       // another holder of the letter
///   corner.makeWritable();                     // its writer now
///   corner *= weight;                          // changes what both handles show
///   if (const Tdata3Double* tuple = same.letterAs<Tdata3Double>()) …
/// \endcode
///
/// A handle on a letter is one of its holders, or its writer. What changes a letter through a handle (compound
/// assignment, reading) makes the handle its writer: of a copy, if the letter has a writer already. Copies of handles
/// are holders. What throws leaves the handles as they were.
///
/// Conversions to whole numbers truncate toward zero and stop at the ends of the range; NaN becomes 0.
class FOUNDATION_API Tdata
{
public:
  /// The id of the chunk of a number, and of those of a time and of NULL, which tag() does not tell.
  static constexpr TiffTag kNumberTag = "DBLE", kTimeTag = "TIME", kNullTag = "NULL";

  // Construction

  constexpr Tdata() noexcept
    : fFlags(kNumeric)
    , fNumber(0)
  {
  }

  /// A number of any type, or what converts to one: the value of an enumeration, an element of a std::vector<bool>.
  template <class Number, std::enable_if_t<std::is_convertible_v<Number, double>, int> = 0>
  constexpr Tdata(Number number) noexcept
    : fFlags(kNumeric)
    , fNumber(double(number))
  {
  }
  Tdata(TanimTime time) noexcept
    : fFlags(kAnimTime)
    , fBits(0)
  {
    fTicks = time.ticks();
  }

  /// Holds the letter, which was the caller's or is shared; NULL for null.
  explicit Tdata(TdataLetter* letter) noexcept
    : fFlags(kHolder)
    , fBits(0)
  {
    fLetter = letter;
    if (letter)
      letter->reference(kDataHolder);
  }

  /// Holds a copy. Throws TmemoryException.
  explicit Tdata(const TdataLetter& letter)
    : Tdata(letter.copy())
  {
  }

  /// The value of \p other; of a letter, another holder.
  Tdata(const Tdata& other) noexcept
    : fFlags(other.fFlags)
    , fBits(other.fBits)
  {
    if (privateDataStar())
      hold();
  }

  /// Leaves NULL behind.
  Tdata(Tdata&& other) noexcept
    : Tdata(static_cast<TdataLetter*>(nullptr))
  {
    swap(other);
  }

  ~Tdata() { release(); }

  // Queries

  bool isNumeric() const noexcept { return fFlags & kNumeric; }
  bool isAnimTime() const noexcept { return fFlags & kAnimTime; }
  bool isNULL() const noexcept { return !isValue() && !fLetter; }

  /// The handle's role with its letter. Numbers and times are writers, NULL is a holder.
  bool holder() const noexcept { return fFlags & kHolder; }
  bool writer() const noexcept { return !holder(); }

  /// Whether the letter has a writer, this or another; true without a letter.
  bool hasWriter() const { return !privateDataStar() || fLetter->hasWriter(); }

  /// Whether there is a letter and this is its writer.
  bool isLetterWritable() const noexcept { return writer() && privateDataStar(); }

  /// A mark that the owner of the handle may make for itself. Copies have it, too.
  bool isFromCache() const noexcept { return fFlags & kFromCache; }
  void fromCache(bool mark) noexcept { fFlags = mark ? fFlags | kFromCache : fFlags & ~kFromCache; }

  /// The letter, which stays the handles' own; null without one.
  TdataLetter* privateDataStar() const noexcept { return isValue() ? nullptr : fLetter; }

  /// The same, but without a letter one that can do nothing.
  TdataLetter& privateData() const { return privateDataStar() ? *fLetter : sNoLetter(); }
  TdataLetter& letter() const { return privateData(); }

  /// The letter if it is a \p Kind; null otherwise.
  template <class Kind>
  const Kind* letterAs() const
  {
    const TdataLetter* letter = privateDataStar();
    return letter && letter->typeof()->isa(Kind::fTypeid) ? static_cast<const Kind*>(letter) : nullptr;
  }

  /// The same, to change it: the handle becomes its writer. Throws TmemoryException.
  template <class Kind>
  Kind* writableAs()
  {
    return letterAs<Kind>() && makeWritable() ? static_cast<Kind*>(fLetter) : nullptr;
  }

  /// The id of the letter's chunk; "DBLE" without a letter.
  TiffTag tag() const { return privateDataStar() ? fLetter->iffTag() : kNumberTag; }

  // Values

  /// The number; of a time its seconds, of a letter what it says, 0 of NULL.
  double doubleValue() const { return isNumeric() ? fNumber : convertToDoubleValue(); }

  /// The same in a type of number.
  template <class Number>
  Number valueAs() const
  {
    static_assert(std::is_arithmetic_v<Number>);
    return convertTo<Number>(doubleValue());
  }
  float floatValue() const { return valueAs<float>(); }
  unsigned char booleanValue() const { return valueAs<bool>(); } ///< 0 for 0 and NaN
  unsigned char byteValue() const { return valueAs<unsigned char>(); }
  char charValue() const { return valueAs<char>(); }
  Tint16 int16Value() const { return valueAs<Tint16>(); }
  Tint32 int32Value() const { return valueAs<Tint32>(); }
  std::size_t size_tValue() const { return valueAs<std::size_t>(); }

  /// The time; otherwise that many seconds, to the nearest tick.
  TanimTime timeValue() const { return isAnimTime() ? TanimTime(fTicks) : TanimTime(doubleValue(), kTimeSeconds); }

  /// Any number as another type of number, as the class comment says.
  template <class Number>
  static Number convertTo(double value) noexcept
  {
    if constexpr (std::is_same_v<Number, bool>)
      return value < 0 || value > 0;
    else if constexpr (std::is_floating_point_v<Number>)
      return Number(value);
    else
    {
      using Limits = std::numeric_limits<Number>;
      if (!(value > double(Limits::min())))
        return value == value ? Limits::min() : Number(0);
      return value < double(Limits::max()) ? Number(value) : Limits::max();
    }
  }

  // Assignment

  /// The value of \p other; of a letter, as a holder. Where the handle has the same letter already, its role stays.
  Tdata& operator=(const Tdata& other) noexcept
  {
    if (isValue() && other.isValue())
    {
      fFlags = other.fFlags;
      fBits = other.fBits;
    }
    else
      assign(other);
    return *this;
  }

  /// The same, but the role of another letter's handle comes along, and \p other is NULL then.
  Tdata& operator=(Tdata&& other) noexcept
  {
    if (!isValue() && !other.isValue() && fLetter == other.fLetter)
      return *this = other;
    Tdata moved(std::move(other));
    swap(moved);
    return *this;
  }
  template <class Number, std::enable_if_t<std::is_convertible_v<Number, double>, int> = 0>
  Tdata& operator=(Number number) noexcept
  {
    become(kNumeric);
    fNumber = double(number);
    return *this;
  }
  Tdata& operator=(TanimTime time) noexcept
  {
    become(kAnimTime);
    fTicks = time.ticks();
    return *this;
  }

  /// Holds \p letter, or nothing if the handle has it already; NULL for null.
  Tdata& operator=(TdataLetter* letter) noexcept;

  /// NULL. Not what `= {}` means, which is ambiguous: say this, or Tdata() for 0.0.
  Tdata& operator=(std::nullptr_t) noexcept
  {
    reset();
    return *this;
  }

  /// Holds a copy. Throws TmemoryException.
  Tdata& operator=(const TdataLetter& letter) { return *this = letter.copy(); }

  void swap(Tdata& other) noexcept
  {
    std::swap(fFlags, other.fFlags);
    std::swap(fBits, other.fBits);
  }

  // Comparison. Times compare with numbers in seconds, NULL equals NULL, and a letter decides itself (see TdataLetter).
  // Values that have nothing to do with each other are not equal; of those > and >= are true, < and <= are not.

  friend bool operator==(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber == right.fNumber : left.isEqual(right);
  }
  friend bool operator!=(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber != right.fNumber : left.isNotEqual(right);
  }
  friend bool operator<(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber < right.fNumber : left.isLess(right);
  }
  friend bool operator<=(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber <= right.fNumber : left.isLessOrEqual(right);
  }
  friend bool operator>(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber > right.fNumber : left.isGreater(right);
  }
  friend bool operator>=(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? left.fNumber >= right.fNumber : left.isGreaterOrEqual(right);
  }

  /// How the values stand to each other, without an operator's true or false.
  TorderOfData compare(const Tdata& other) const;

  // Arithmetic. The left value keeps its kind: a number takes a time's seconds; a time takes a number as seconds in
  // sums, and as a factor otherwise. Only a number times a letter is a letter. Throws TincompatibleData for what means
  // nothing, and TmemoryException.

  Tdata& operator+=(const Tdata& other)
  {
    if (!(fFlags & other.fFlags & kNumeric))
      return apply(ToperationOnData::kAdd, other);
    fNumber += other.fNumber;
    return *this;
  }
  Tdata& operator-=(const Tdata& other)
  {
    if (!(fFlags & other.fFlags & kNumeric))
      return apply(ToperationOnData::kSubtract, other);
    fNumber -= other.fNumber;
    return *this;
  }
  Tdata& operator*=(const Tdata& other)
  {
    if (!(fFlags & other.fFlags & kNumeric))
      return apply(ToperationOnData::kMultiply, other);
    fNumber *= other.fNumber;
    return *this;
  }
  Tdata& operator/=(const Tdata& other)
  {
    if (!(fFlags & other.fFlags & kNumeric))
      return apply(ToperationOnData::kDivide, other);
    fNumber /= other.fNumber;
    return *this;
  }

  friend Tdata operator+(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? Tdata(left.fFlags, left.fNumber + right.fNumber)
                                                 : left.combined(ToperationOnData::kAdd, right);
  }
  friend Tdata operator-(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? Tdata(left.fFlags, left.fNumber - right.fNumber)
                                                 : left.combined(ToperationOnData::kSubtract, right);
  }
  friend Tdata operator*(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? Tdata(left.fFlags, left.fNumber * right.fNumber)
                                                 : left.combined(ToperationOnData::kMultiply, right);
  }
  friend Tdata operator/(const Tdata& left, const Tdata& right)
  {
    return left.fFlags & right.fFlags & kNumeric ? Tdata(left.fFlags, left.fNumber / right.fNumber)
                                                 : left.combined(ToperationOnData::kDivide, right);
  }

  /// This value with the operation applied; a letter is a new one.
  Tdata combined(ToperationOnData operation, const Tdata& other) const;

  // Roles

  /// The value; of a letter, the only handle on a copy. Throws TmemoryException.
  Tdata unshared() const;

  /// Makes the handle the writer of its letter, or of a copy when the letter has another writer. Always true. Throws
  /// TmemoryException.
  bool makeWritable();
  bool makeWriter() { return makeWritable(); }

  /// Makes it a holder. Always true.
  bool makeHolder();

  /// NULL.
  void reset() noexcept
  {
    release();
    fFlags = (fFlags & kFromCache) | kHolder;
    fBits = 0;
  }
  void setToNULL() noexcept { reset(); }

  // Storage, with the status as in TdataLetter; docs/data.md has the forms.

  /// Takes the next value from the arguments, whose first may be the name of a kind: \code 1.5  120t  NULL  double2 1 2
  /// \endcode Otherwise the value is one for the present letter, or a number or a time. No more than \p count arguments
  /// (below 0: all) are taken. On failure the handle and \p next are as they were.
  long readASCII(TargList& arguments, unsigned int& next, long count);

  /// Takes the value from a chunk: \p size bytes at \p data, which become what is left. A present letter with that id
  /// takes or refuses it. Otherwise the id decides its kind: an unknown one gives a TdataUnknown, and so does one whose
  /// kind refuses the bytes.
  long readBinary(TiffTag tag, unsigned long& size, void*& data);

  /// Writes the value, behind the name of its kind if \p named and a letter.
  long writeASCII(Tfile& file, long perLine, unsigned char named) const;

  /// Writes the value as a chunk, or group.
  long writeBinary(TiffFile& file) const;

  /// Appends what writeASCII() writes. Throws TmemoryException.
  void appendText(Tstring& text, long perLine, bool named) const;

  /// A new handle, the caller's: 0.0 for the records "Tdata" and "TdataNumeric", on a new letter for that of a letter
  /// kind (NULL when the kind has no creator). Null for others, and when there is no memory.
  static Tdata* construct(Tmetaclass* type);

  /// Handles come from a list of those that were freed, last freed first. Their memory is not given back.
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* handle, std::size_t size) noexcept;
  static void operator delete(void*, void*) noexcept {}

  /// The record, and that of handles which are numbers.
  static Tmetaclass* fTypeid;
  static Tmetaclass* fNumericTypeid;

private:
  enum Tflags : TuInt32
  {
    kNumeric = 1,
    kAnimTime = 2,
    kFromCache = 4,
    kHolder = 8
  };

  // A number, with these flags; that it is one shows the compiler what it may leave out.
  Tdata(TuInt32 flags, double number) noexcept
    : fFlags(flags | kNumeric)
    , fNumber(number)
  {
  }

  bool isValue() const noexcept { return fFlags & (kNumeric | kAnimTime); }
  TdataRefType role() const noexcept { return holder() ? kDataHolder : kDataWriter; }

  // Of a handle on a letter that does not count it yet.
  void hold() noexcept
  {
    fFlags |= kHolder;
    fLetter->reference(kDataHolder);
  }

  // Leaves a letter in place that may be gone.
  void release() noexcept
  {
    if (isNumeric() || !privateDataStar())
      return;
    if (holder() && fLetter->holderCount() > 1)
      fLetter->unreferenceNoDelete(kDataHolder);
    else
      releaseLast();
  }
  void releaseLast() noexcept; // the last holder, or a writer
  void become(Tflags kind) noexcept
  {
    release();
    fFlags = (fFlags & kFromCache) | kind;
    fBits = 0;
  }

  void assign(const Tdata& other) noexcept;
  template <class Change>
  long changeLetter(Change change);
  Tdata& apply(ToperationOnData operation, const Tdata& other);
  double convertToDoubleValue() const;
  bool isEqual(const Tdata& other) const;
  bool isNotEqual(const Tdata& other) const;
  bool isLess(const Tdata& other) const;
  bool isLessOrEqual(const Tdata& other) const;
  bool isGreater(const Tdata& other) const;
  bool isGreaterOrEqual(const Tdata& other) const;
  static TdataLetter& sNoLetter();

  TuInt32 fFlags;
  union alignas(8)
  {
    double fNumber;
    Tint32 fTicks;
    TdataLetter* fLetter;
    TuInt64 fBits; // all of it; what a pointer or ticks leave is 0
  };
};

static_assert(sizeof(Tdata) == 16, "flags and a payload, on every platform");

template <>
inline constexpr bool kMovesBitwise<Tdata> = true;

/// Handles.
class TDarray : public TtypedObjArray<Tdata>
{
public:
  using TtypedArray::TtypedArray;
};

/// The value, behind the name of its kind if it is a letter: "1.5", "120t", "NULL", "double2 1 2.5".
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const Tdata& data);
