/// \file
/// TdataLetter: the base of the values that are shared between handles (Tdata): tuples, arrays, matrices, colours.
///
/// Use the kinds in TdataCompound.h, TdataTuple.h, TdataArrays.h, TdataMatrix.h, TdataColor.h and TdataUnknown.h
/// through handles; derive from TdataLetter, or from one of these, for a kind of your own. The trap: a letter that no
/// handle has taken yet belongs to whoever made it.

#pragma once

#include "Foundation/Data/MPtrBase.h"
#include "Foundation/Data/TmultiSharedObject.h"
#include "Foundation/Iff/TiffTag.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <iosfwd>

class TargList;
class Tdata;
class TdebugOutput;
class Tfile;
class TfootprintInfo;
class TiffFile;
class Tmetaclass;
class Tstring;

/// What refers to a letter: handles that read it, and the one that writes it (docs/data.md tells more).
enum TdataRefType
{
  kDataHolder,
  kDataWriter
};

/// The arithmetic of values.
enum class ToperationOnData
{
  kAdd,
  kSubtract,
  kMultiply,
  kDivide
};

/// How a value stands to another.
enum class TorderOfData
{
  kLess,
  kEqual,
  kGreater,
  kUnordered, ///< neither, because of a NaN
  kSame,      ///< equal, in a kind without order
  kDifferent, ///< not equal, in a kind without order
  kIncompatible
};

/// The types of numbers in letters.
enum class TnumberType
{
  kInt16,
  kInt32,
  kFloat,
  kDouble
};

/// A shared value. Of itself it is one that can do nothing.
///
/// A kind of its own has a record whose parent is TdataLetter or another kind, with a tag and a creator; a static
/// TmetaLetter that makes it known; and overrides of what it supports: reset(), copy(), the typing trio, compare(),
/// combine() and scale() for all operators at once, and the five of storage. What it does not override does nothing,
/// fails, or throws TincompatibleData:
///
/// \code
///   operator       with a letter          with a handle on a letter
///   == !=          compare() decides,     compare() decides, and where it cannot the values differ
///   < <= > >=      or throws              the same; > and >= are true then
///   += -= *= /=    combine() or throws    the same; scale() or throws with a number or a time
///   + - * /        a copy, to which the operator with = is applied
/// \endcode
///
/// An operator that throws has changed nothing. A kind in a plug-in, which goes with it:
///
/// \snippet plugin/plugin.cpp letter
class FOUNDATION_API TdataLetter : public TmultiSharedObject, public MPtrBase
{
public:
  TdataLetter() noexcept = default;
  TdataLetter(const TdataLetter&) noexcept = default;
  TdataLetter& operator=(const TdataLetter&) noexcept = default;
  ~TdataLetter() override;

  /// Prints kind, references and, from \p level 1 on, the value.
  virtual void debug(TdebugOutput& out, unsigned int level) const;

  /// Goes back to the value of a new letter of the kind.
  virtual void reset();

  /// A new letter of the kind with the same value, the caller's; later changes of one don't show in the other. Throws
  /// TmemoryException.
  virtual TdataLetter* copy() const;

  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);

  /// Adds the memory of the letter under the name of its kind.
  virtual void _getFootprint(TfootprintInfo& info) const;

  virtual bool operator==(const Tdata& other) const;
  virtual bool operator==(const TdataLetter& other) const;
  virtual bool operator!=(const Tdata& other) const;
  virtual bool operator!=(const TdataLetter& other) const;
  virtual bool operator<(const Tdata& other) const;
  virtual bool operator<(const TdataLetter& other) const;
  virtual bool operator<=(const Tdata& other) const;
  virtual bool operator<=(const TdataLetter& other) const;
  virtual bool operator>(const Tdata& other) const;
  virtual bool operator>(const TdataLetter& other) const;
  virtual bool operator>=(const Tdata& other) const;
  virtual bool operator>=(const TdataLetter& other) const;

  /// New letters of this kind, the caller's.
  virtual TdataLetter* operator+(const TdataLetter& other) const;
  virtual TdataLetter* operator-(const TdataLetter& other) const;
  virtual TdataLetter* operator*(const TdataLetter& other) const;
  virtual TdataLetter* operator/(const TdataLetter& other) const;

  virtual TdataLetter& operator+=(const Tdata& other);
  virtual TdataLetter& operator+=(const TdataLetter& other);
  virtual TdataLetter& operator-=(const Tdata& other);
  virtual TdataLetter& operator-=(const TdataLetter& other);
  virtual TdataLetter& operator*=(const Tdata& other);
  virtual TdataLetter& operator*=(const TdataLetter& other);
  virtual TdataLetter& operator/=(const Tdata& other);
  virtual TdataLetter& operator/=(const TdataLetter& other);

  /// The value as one number; 0 where that means nothing.
  virtual double doubleValue() const;

  /// Told when a writer has come, and when one goes. Must not throw.
  virtual void madeIntoWriter();
  virtual void madeIntoNonWriter();

  virtual bool hasWriter() const;

  // Storage. The status is 0, or not 0 when it failed. A letter that could not be read is as it was; what the kinds
  // write is in docs/data.md.

  /// The status of a letter that cannot be read or written, or not from this.
  static constexpr long kFailed = -1;

  /// Takes the value from the arguments from \p next on, of which \p count belong to it at most (below 0: all), and
  /// sets \p next behind them. On failure it stays.
  virtual long readASCII(TargList& arguments, unsigned int& next, long count);

  /// Takes the value from a chunk with the id \p tag and the \p size bytes at \p data; then both are what is left.
  virtual long readBinary(TiffTag tag, unsigned long& size, void*& data);

  /// Writes the value as arguments separated by blanks, and by a line's end behind each \p perLine of many alike if
  /// that is above 0. The status is the file's error.
  virtual long writeASCII(Tfile& file, long perLine);

  /// Writes the value as one chunk or group into a file that is open for that. The status is the engine's.
  virtual long writeBinary(TiffFile& file);

  /// The name of the kind, and the id of the chunks that hold it.
  virtual const char* typeName() const;
  virtual TiffTag iffTag() const;

  /// A writer's reference for an object of the programming interface.
  void apiReference() override { reference(kDataWriter); }
  void apiUnreference() override { unreference(kDataWriter); }

  /// Take and give back a reference. A letter is deleted with the last one of both types.
  void reference(TdataRefType type)
  {
    TmultiSharedObject::reference(type);
    if (type == kDataWriter)
      madeIntoWriter();
  }
  void unreference(TdataRefType type)
  {
    if (type == kDataWriter)
      madeIntoNonWriter();
    TmultiSharedObject::unreference(type);
  }

  /// Gives one back and leaves the letter to the caller.
  void unreferenceNoDelete(TdataRefType type)
  {
    TmultiSharedObject::unreferenceNoDelete(type);
    if (type == kDataWriter)
      madeIntoNonWriter();
  }

  Tint32 holderCount() const noexcept { return referenceCount(kDataHolder); }
  Tint32 writerCount() const noexcept { return referenceCount(kDataWriter); }
  using TmultiSharedObject::referenceCount;

  /// A new letter of the kind, the caller's; null for what is no kind of letter, and when there is no memory.
  static TdataLetter* construct(Tmetaclass* type);

  /// The value as arguments, as writeASCII() writes it. Throws TmemoryException.
  Tstring text(long perLine = 0) const;

  static Tmetaclass* fTypeid;

  /// How the letter stands to \p other, whatever kind that is; incompatible to what is no letter.
  virtual TorderOfData compare(const TdataLetter& other) const;
  TorderOfData compare(const Tdata& other) const;

  /// Appends what text() is made of; nothing is a value, too. Throws TmemoryException.
  virtual void appendText(Tstring& text, long perLine) const;

protected:
  /// Applies \p operation with \p other or with a number. False, and nothing has changed, where it means nothing.
  virtual bool combine(ToperationOnData operation, const TdataLetter& other);
  virtual bool scale(ToperationOnData operation, double number);

private:
  TdataLetter& apply(ToperationOnData operation, const Tdata& other);
  TdataLetter& apply(ToperationOnData operation, const TdataLetter& other);
};

/// The name of the kind and the value: "double2 1 2.5".
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TdataLetter& letter);
