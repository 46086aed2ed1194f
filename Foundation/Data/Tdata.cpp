#include "Foundation/Data/Tdata.h"

#include "Foundation/Data/Comparison.h"
#include "Foundation/Data/Components.h"
#include "Foundation/Data/TdataUnknown.h"
#include "Foundation/Data/Typed.h"
#include "Foundation/File/Tfile.h"
#include "Foundation/Iff/TiffFile.h"

#include <memory>
#include <ostream>

static constexpr char kNullText[] = "NULL";

static void* createData(Tmetaclass* requested)
{
  return Tdata::construct(requested);
}

static Tmetaclass gTdata(&Tdata::fTypeid, "Tdata", 16, createData, Tdata::kNumberTag.value(), 0);
static Tmetaclass gTdataNumeric(&Tdata::fNumericTypeid, "TdataNumeric", 16, createData, 0, 0);
Tmetaclass* Tdata::fTypeid = &gTdata;
Tmetaclass* Tdata::fNumericTypeid = &gTdataNumeric;

Tdata* Tdata::construct(Tmetaclass* type)
{
  try
  {
    if (type == fTypeid || type == fNumericTypeid)
      return new Tdata;
    if (type && type->isa(TdataLetter::fTypeid))
    {
      Tdata data(TdataLetter::construct(type));
      return data.isNULL() && !type->isAbstract() ? nullptr : new Tdata(std::move(data));
    }
  }
  catch (const std::exception&) // there is no memory
  {
  }
  return nullptr;
}

// ---------------------------------------------------------------------------------------------------------------------
// Handles on the heap

namespace {

// Freed handles, each in the memory of which it was one.
struct Freed
{
  Freed* fNext;
};
Freed* gFreed = nullptr;

} // namespace

void* Tdata::operator new(std::size_t size)
{
  Freed* handle = gFreed;
  if (!handle || size != sizeof(Tdata))
    return ::operator new(size);
  gFreed = handle->fNext;
  return handle;
}

void Tdata::operator delete(void* handle, std::size_t size) noexcept
{
  if (!handle)
    return;
  if (size != sizeof(Tdata))
    ::operator delete(handle);
  else
    gFreed = ::new (handle) Freed{gFreed};
}

// ---------------------------------------------------------------------------------------------------------------------
// Values and roles

TdataLetter& Tdata::sNoLetter()
{
  static TdataLetter* const letter = new TdataLetter;
  return *letter;
}

void Tdata::releaseLast() noexcept
{
  fLetter->unreference(role());
}

double Tdata::convertToDoubleValue() const
{
  return isAnimTime() ? TanimTime(fTicks).valueInThisUnit(kTimeSeconds) : fLetter ? fLetter->doubleValue() : 0;
}

void Tdata::assign(const Tdata& other) noexcept
{
  if (this == &other)
    return;
  if (!isValue() && !other.isValue() && fLetter == other.fLetter)
    fFlags = (other.fFlags & ~kHolder) | (fFlags & kHolder);
  else
    Tdata(other).swap(*this);
}

Tdata& Tdata::operator=(TdataLetter* letter) noexcept
{
  if (!letter || letter != privateDataStar())
  {
    Tdata held(letter);
    held.fromCache(isFromCache());
    held.swap(*this);
  }
  return *this;
}

Tdata Tdata::unshared() const
{
  if (!privateDataStar())
    return *this;
  Tdata copy(*fLetter);
  copy.fromCache(isFromCache());
  return copy;
}

bool Tdata::makeWritable()
{
  if (!privateDataStar() || writer())
    return true;
  if (fLetter->hasWriter())
    unshared().swap(*this);
  fLetter->reference(kDataWriter);
  fLetter->unreferenceNoDelete(kDataHolder);
  fFlags &= ~kHolder;
  return true;
}

bool Tdata::makeHolder()
{
  if (isLetterWritable())
  {
    fLetter->reference(kDataHolder);
    fLetter->unreferenceNoDelete(kDataWriter);
    fFlags |= kHolder;
  }
  return true;
}

template <class Change>
long Tdata::changeLetter(Change change)
{
  if (isLetterWritable() || !fLetter->hasWriter())
  {
    const long status = change(*fLetter);
    if (status == 0)
      makeWritable();
    return status;
  }
  Tdata copy = unshared();
  const long status = change(*copy.fLetter);
  if (status == 0)
  {
    copy.makeWritable();
    copy.swap(*this);
  }
  return status;
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison

TorderOfData Tdata::compare(const Tdata& other) const
{
  if (privateDataStar())
    return fLetter->compare(other);
  if (isNULL() || other.isNULL() || other.privateDataStar())
    return isNULL() && other.isNULL() ? TorderOfData::kEqual : TorderOfData::kIncompatible;
  if (isAnimTime() && other.isAnimTime())
    return orderOf(fTicks, other.fTicks);
  return orderOf(doubleValue(), other.doubleValue());
}

bool Tdata::isEqual(const Tdata& other) const
{
  return privateDataStar() ? *fLetter == other : isTrue(kIsEqual, compare(other));
}

bool Tdata::isNotEqual(const Tdata& other) const
{
  return privateDataStar() ? *fLetter != other : isTrue(kIsNotEqual, compare(other));
}

bool Tdata::isLess(const Tdata& other) const
{
  return privateDataStar() ? *fLetter < other : isTrue(kIsLess, compare(other));
}

bool Tdata::isLessOrEqual(const Tdata& other) const
{
  return privateDataStar() ? *fLetter <= other : isTrue(kIsLessOrEqual, compare(other));
}

bool Tdata::isGreater(const Tdata& other) const
{
  return privateDataStar() ? *fLetter > other : isTrue(kIsGreater, compare(other));
}

bool Tdata::isGreaterOrEqual(const Tdata& other) const
{
  return privateDataStar() ? *fLetter >= other : isTrue(kIsGreaterOrEqual, compare(other));
}

// ---------------------------------------------------------------------------------------------------------------------
// Arithmetic

namespace {

template <class Left, class Right>
void applyTo(Left& left, ToperationOnData operation, const Right& right)
{
  switch (operation)
  {
  case ToperationOnData::kAdd: left += right; break;
  case ToperationOnData::kSubtract: left -= right; break;
  case ToperationOnData::kMultiply: left *= right; break;
  case ToperationOnData::kDivide: left /= right; break;
  }
}

} // namespace

Tdata Tdata::combined(ToperationOnData operation, const Tdata& other) const
{
  Tdata result = unshared();
  applyTo(result, operation, other);
  result.makeHolder();
  return result;
}

Tdata& Tdata::apply(ToperationOnData operation, const Tdata& other)
{
  if (privateDataStar())
  {
    changeLetter([&](TdataLetter& letter) {
      applyTo(letter, operation, other);
      return 0L;
    });
    return *this;
  }
  if (isNumeric() && operation == ToperationOnData::kMultiply && other.privateDataStar())
    return *this = other.combined(operation, *this);
  if (!isValue() || !other.isValue())
    throw TincompatibleData();
  if (isNumeric())
    applyTo(fNumber, operation, other.doubleValue());
  else
  {
    TanimTime time(fTicks);
    if (other.isAnimTime() || operation == ToperationOnData::kAdd || operation == ToperationOnData::kSubtract)
      applyTo(time, operation, other.timeValue());
    else if (operation == ToperationOnData::kMultiply)
      time *= other.fNumber;
    else
      time /= other.fNumber;
    fTicks = time.ticks();
  }
  return *this;
}

// ---------------------------------------------------------------------------------------------------------------------
// Storage

void Tdata::appendText(Tstring& text, long perLine, bool named) const
{
  if (isNumeric())
    appendNumber(text, fNumber);
  else if (isAnimTime())
  {
    appendNumber(text, fTicks);
    appendPiece(text, "t");
  }
  else if (!fLetter)
    appendPiece(text, kNullText);
  else
  {
    if (named)
    {
      appendPiece(text, fLetter->typeName());
      appendPiece(text, " ");
    }
    fLetter->appendText(text, perLine);
  }
}

std::ostream& operator<<(std::ostream& out, const Tdata& data)
{
  Tstring text;
  data.appendText(text, 0, true);
  return out << text;
}

long Tdata::writeASCII(Tfile& file, long perLine, unsigned char named) const
{
  if (!privateDataStar())
  {
    Tstring text;
    appendText(text, perLine, named);
    return file.put(text) ? 0 : file.error();
  }
  if (named && !(file.put(fLetter->typeName()) && file.put(" ")))
    return file.error();
  return fLetter->writeASCII(file, perLine);
}

long Tdata::readASCII(TargList& arguments, unsigned int& next, long count)
{
  const unsigned int end = endOfArguments(arguments, next, count);
  unsigned int at = next;
  double number;
  TanimTime time;
  Tstring name;
  if (at == end)
    return TdataLetter::kFailed;
  if (Tdata letter(namedLetter(arguments, at)); !letter.isNULL())
  {
    if (const long status = letter.fLetter->readASCII(arguments, at, long(end - at)))
      return status;
    *this = letter;
  }
  else if (arguments.asString(at, name) && name == kNullText)
  {
    reset();
    ++at;
  }
  else if (privateDataStar())
  {
    const auto read = [&](TdataLetter& present) { return present.readASCII(arguments, at, long(end - at)); };
    if (const long status = changeLetter(read))
      return status;
  }
  else if (arguments.type(at) != TargList::kTime && arguments.asDouble(at, number))
  {
    *this = number;
    ++at;
  }
  else if (arguments.asTime(at, time))
  {
    *this = time;
    ++at;
  }
  else
    return TdataLetter::kFailed;
  next = at;
  return 0;
}

long Tdata::readBinary(TiffTag tag, unsigned long& size, void*& data)
{
  if (privateDataStar() && fLetter->iffTag() == tag)
    return changeLetter([&](TdataLetter& present) { return present.readBinary(tag, size, data); });
  const char* const from = static_cast<const char*>(data);
  if (tag == kNumberTag && size == sizeof fNumber)
  {
    double number;
    getBigEndian(from, number);
    *this = number;
  }
  else if (tag == kTimeTag && size == sizeof fTicks)
  {
    Tint32 ticks;
    getBigEndian(from, ticks);
    *this = TanimTime(ticks);
  }
  else if (tag == kNullTag && size == 0)
    reset();
  else
  {
    Tdata letter(TmetaLetter::construct(tag));
    if (letter.isNULL())
      throw TmemoryException();
    if (letter.fLetter->readBinary(tag, size, data) != 0)
    {
      // Claimed, but not by what it holds: kept as it is, like a chunk that nobody claims.
      letter = Tdata(makeNew<TdataUnknown>());
      if (const long status = letter.fLetter->readBinary(tag, size, data))
        return status;
    }
    *this = letter;
    return 0;
  }
  data = static_cast<char*>(data) + size;
  size = 0;
  return 0;
}

long Tdata::writeBinary(TiffFile& file) const
{
  if (privateDataStar())
    return fLetter->writeBinary(file);
  char bytes[sizeof fBits] = {};
  if (isNumeric())
    return file.putChunk(kNumberTag, Tint32(putBigEndian(bytes, fNumber) - bytes), bytes);
  if (isAnimTime())
    return file.putChunk(kTimeTag, Tint32(putBigEndian(bytes, fTicks) - bytes), bytes);
  return file.putChunk(kNullTag, 0, nullptr);
}
