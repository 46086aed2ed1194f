/// \file
/// TdataNumbers: what the letters have in common whose value is a row of numbers of one type: arrays, matrices,
/// colours.

#pragma once

#include "Foundation/Data/TdataLetter.h"

#include <utility>

/// A row of numbers as a letter. Values are compared number by number, the first difference decides, and a row comes
/// before one that it begins; where the length is fixed there is no order. Arithmetic is done number by number, with
/// one number for all in products and quotients only. The letters must be of one kind, and for arithmetic of one
/// length. Whole numbers are computed in double and brought back as Tdata::convertTo() does.
class FOUNDATION_API TdataNumbers : public TdataLetter
{
public:
  void _getFootprint(TfootprintInfo& info) const override;
  TorderOfData compare(const TdataLetter& other) const override;
  long readASCII(TargList& arguments, unsigned int& next, long count) override;
  long readBinary(TiffTag tag, unsigned long& size, void*& data) override;
  long writeBinary(TiffFile& file) override;
  void appendText(Tstring& text, long perLine) const override;

protected:
  /// Where the numbers are.
  struct Trow
  {
    void* fFirst;
    unsigned int fCount;
    TnumberType fType;
  };
  virtual Trow row() const = 0;

  /// What the length must be a multiple of; where it is fixed, the length.
  virtual unsigned int step() const = 0;
  virtual bool hasFixedLength() const = 0;

  /// Makes the row one of \p count numbers, a multiple of step(). Throws TmemoryException.
  virtual void setCount(unsigned int count) = 0;

  bool combine(ToperationOnData operation, const TdataLetter& other) override;
  bool scale(ToperationOnData operation, double number) override;

private:
  static Tmetaclass* fTypeid; // there is none: nothing can be asked whether it is such a row
};

/// A value of type \p Value, which is so many numbers behind each other.
template <class Value, unsigned int kLength, TnumberType kType>
class TdataValueOf : public TdataNumbers
{
public:
  TdataValueOf() = default;
  explicit TdataValueOf(const Value& value)
    : fValue(value)
  {
  }

  const Value& value() const noexcept { return fValue; }
  Value& value() noexcept { return fValue; }

  void reset() override { fValue = Value(); }

protected:
  Trow row() const override { return {const_cast<Value*>(&fValue), kLength, kType}; }
  unsigned int step() const override { return kLength; }
  bool hasFixedLength() const override { return true; }
  void setCount(unsigned int) override {}

private:
  Value fValue;
};

/// An array of type \p Array, whose elements are \p kStep numbers each.
template <class Array, unsigned int kStep, TnumberType kType>
class TdataArrayOf : public TdataNumbers
{
public:
  TdataArrayOf() = default;
  explicit TdataArrayOf(Array array)
    : fArray(std::move(array))
  {
  }

  const Array& array() const noexcept { return fArray; }
  Array& array() noexcept { return fArray; }

  void reset() override { fArray = Array(); }

protected:
  Trow row() const override
  {
    using Element = typename Array::value_type;
    return {const_cast<Element*>(fArray.data()), fArray.length() * kStep, kType};
  }
  unsigned int step() const override { return kStep; }
  bool hasFixedLength() const override { return false; }
  void setCount(unsigned int count) override { fArray.changeLogicalSizeTo(count / kStep); }

private:
  Array fArray;
};
