#include "Foundation/Data/TdataLetter.h"

#include "Foundation/Data/Comparison.h"
#include "Foundation/Data/Letters.h"
#include "Foundation/Data/Tdata.h"
#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/File/Tfile.h"
#include "Foundation/Memory/TfootprintInfo.h"
#include "Foundation/String/Tstring.h"

#include <memory>
#include <ostream>

static Tmetaclass gTdataLetter(&TdataLetter::fTypeid, "TdataLetter", 32, createLetter<TdataLetter>, 0, 0);
Tmetaclass* TdataLetter::fTypeid = &gTdataLetter;
TYPE_CAST(TdataLetter, Tuntyped)

Tmetaclass* TdataLetter::typeof() const
{
  return fTypeid;
}

TdataLetter::~TdataLetter() = default;

TdataLetter* TdataLetter::construct(Tmetaclass* type)
{
  return type && type->isa(fTypeid) ? static_cast<TdataLetter*>(type->construct(fTypeid)) : nullptr;
}

void TdataLetter::debug(TdebugOutput& out, unsigned int level) const
{
  out.print("%s [%p]: %ld holders, %ld writers\n", typeName(), static_cast<const void*>(this), long(holderCount()),
            long(writerCount()));
  if (level > 0)
    out.printDetail(text().asC());
}

void TdataLetter::reset() {}

TdataLetter* TdataLetter::copy() const
{
  return makeNew<TdataLetter>();
}

void TdataLetter::_getFootprint(TfootprintInfo& info) const
{
  info.add(typeName(), sizeof *this, sizeof *this);
}

// ---------------------------------------------------------------------------------------------------------------------
// Comparison

namespace {

bool isTrueOrThrow(Tcomparison comparison, TorderOfData order)
{
  if (kAnswers[int(order)].fMeaningless & comparison)
    throw TincompatibleData();
  return isTrue(comparison, order);
}

} // namespace

TorderOfData TdataLetter::compare(const TdataLetter&) const
{
  return TorderOfData::kIncompatible;
}

TorderOfData TdataLetter::compare(const Tdata& other) const
{
  const TdataLetter* letter = other.privateDataStar();
  return letter ? compare(*letter) : TorderOfData::kIncompatible;
}

bool TdataLetter::operator==(const Tdata& other) const
{
  return isTrue(kIsEqual, compare(other));
}
bool TdataLetter::operator==(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsEqual, compare(other));
}
bool TdataLetter::operator!=(const Tdata& other) const
{
  return isTrue(kIsNotEqual, compare(other));
}
bool TdataLetter::operator!=(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsNotEqual, compare(other));
}
bool TdataLetter::operator<(const Tdata& other) const
{
  return isTrue(kIsLess, compare(other));
}
bool TdataLetter::operator<(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsLess, compare(other));
}
bool TdataLetter::operator<=(const Tdata& other) const
{
  return isTrue(kIsLessOrEqual, compare(other));
}
bool TdataLetter::operator<=(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsLessOrEqual, compare(other));
}
bool TdataLetter::operator>(const Tdata& other) const
{
  return isTrue(kIsGreater, compare(other));
}
bool TdataLetter::operator>(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsGreater, compare(other));
}
bool TdataLetter::operator>=(const Tdata& other) const
{
  return isTrue(kIsGreaterOrEqual, compare(other));
}
bool TdataLetter::operator>=(const TdataLetter& other) const
{
  return isTrueOrThrow(kIsGreaterOrEqual, compare(other));
}

// ---------------------------------------------------------------------------------------------------------------------
// Arithmetic

bool TdataLetter::combine(ToperationOnData, const TdataLetter&)
{
  return false;
}

bool TdataLetter::scale(ToperationOnData, double)
{
  return false;
}

TdataLetter& TdataLetter::apply(ToperationOnData operation, const Tdata& other)
{
  if (const TdataLetter* letter = other.privateDataStar())
    return apply(operation, *letter);
  if (other.isNULL() || !scale(operation, other.doubleValue()))
    throw TincompatibleData();
  return *this;
}

TdataLetter& TdataLetter::apply(ToperationOnData operation, const TdataLetter& other)
{
  if (!combine(operation, other))
    throw TincompatibleData();
  return *this;
}

TdataLetter& TdataLetter::operator+=(const Tdata& other)
{
  return apply(ToperationOnData::kAdd, other);
}
TdataLetter& TdataLetter::operator+=(const TdataLetter& other)
{
  return apply(ToperationOnData::kAdd, other);
}
TdataLetter& TdataLetter::operator-=(const Tdata& other)
{
  return apply(ToperationOnData::kSubtract, other);
}
TdataLetter& TdataLetter::operator-=(const TdataLetter& other)
{
  return apply(ToperationOnData::kSubtract, other);
}
TdataLetter& TdataLetter::operator*=(const Tdata& other)
{
  return apply(ToperationOnData::kMultiply, other);
}
TdataLetter& TdataLetter::operator*=(const TdataLetter& other)
{
  return apply(ToperationOnData::kMultiply, other);
}
TdataLetter& TdataLetter::operator/=(const Tdata& other)
{
  return apply(ToperationOnData::kDivide, other);
}
TdataLetter& TdataLetter::operator/=(const TdataLetter& other)
{
  return apply(ToperationOnData::kDivide, other);
}

TdataLetter* TdataLetter::operator+(const TdataLetter& other) const
{
  std::unique_ptr<TdataLetter> result(copy());
  *result += other;
  return result.release();
}
TdataLetter* TdataLetter::operator-(const TdataLetter& other) const
{
  std::unique_ptr<TdataLetter> result(copy());
  *result -= other;
  return result.release();
}
TdataLetter* TdataLetter::operator*(const TdataLetter& other) const
{
  std::unique_ptr<TdataLetter> result(copy());
  *result *= other;
  return result.release();
}
TdataLetter* TdataLetter::operator/(const TdataLetter& other) const
{
  std::unique_ptr<TdataLetter> result(copy());
  *result /= other;
  return result.release();
}

// ---------------------------------------------------------------------------------------------------------------------
// The rest

double TdataLetter::doubleValue() const
{
  return 0;
}

void TdataLetter::madeIntoWriter() {}

void TdataLetter::madeIntoNonWriter() {}

bool TdataLetter::hasWriter() const
{
  return writerCount() != 0;
}

long TdataLetter::readASCII(TargList&, unsigned int&, long)
{
  return kFailed;
}

long TdataLetter::readBinary(TiffTag, unsigned long&, void*&)
{
  return kFailed;
}

long TdataLetter::writeASCII(Tfile& file, long perLine)
{
  return file.put(text(perLine)) ? 0 : file.error();
}

long TdataLetter::writeBinary(TiffFile&)
{
  return kFailed;
}

const char* TdataLetter::typeName() const
{
  return typeof()->name();
}

TiffTag TdataLetter::iffTag() const
{
  return typeof()->tag();
}

Tstring TdataLetter::text(long perLine) const
{
  Tstring text;
  appendText(text, perLine);
  return text;
}

void TdataLetter::appendText(Tstring&, long) const {}

std::ostream& operator<<(std::ostream& out, const TdataLetter& letter)
{
  const Tstring text = letter.text();
  out << letter.typeName();
  return text.empty() ? out : out << ' ' << text;
}
