/// \file
/// Two or three numbers of one type as a letter: Tdata3Double and its like.

#pragma once

#include "Foundation/Data/TdataCompound.h"

/// What the tuples have in common: a compound of so many children, each a number. What is set or computed becomes a
/// number of the tuple's type as Tdata::convertTo() does; letters and NULL do not. In a file it is a chunk.
class FOUNDATION_API TdataTuple : public TdataCompound
{
public:
  void reset() override;
  long readASCII(TargList& arguments, unsigned int& next, long count) override;
  long readBinary(TiffTag tag, unsigned long& size, void*& data) override;
  long writeBinary(TiffFile& file) override;
  void appendText(Tstring& text, long perLine) const override;
  bool hasFixedLength() const override { return true; }

protected:
  TdataTuple(TnumberType type, unsigned int length);

  Tdata accepted(const Tdata& data) const override;

private:
  static Tmetaclass* fTypeid; // there is none: nothing can be asked whether it is a tuple

  TnumberType fType;
};

/// \p kLength numbers, of type \p Number.
template <class Number, unsigned int kLength, TnumberType kType>
class TdataTupleOf : public TdataTuple
{
public:
  TdataTupleOf()
    : TdataTuple(kType, kLength)
  {
  }
  template <class... Numbers, std::enable_if_t<sizeof...(Numbers) == kLength, int> = 0>
  explicit TdataTupleOf(Numbers... numbers)
    : TdataTupleOf()
  {
    unsigned int i = 0;
    ((fChildren[i++] = Tdata::convertTo<Number>(double(numbers))), ...);
  }

  /// The number at \p index, which is not checked.
  Number number(unsigned int index) const noexcept { return Number(fChildren[index].doubleValue()); }
};

class FOUNDATION_API Tdata2Double : public TdataTupleOf<double, 2, TnumberType::kDouble>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata2Float : public TdataTupleOf<float, 2, TnumberType::kFloat>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata2Int16 : public TdataTupleOf<Tint16, 2, TnumberType::kInt16>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata2Int32 : public TdataTupleOf<Tint32, 2, TnumberType::kInt32>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata3Double : public TdataTupleOf<double, 3, TnumberType::kDouble>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata3Float : public TdataTupleOf<float, 3, TnumberType::kFloat>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata3Int16 : public TdataTupleOf<Tint16, 3, TnumberType::kInt16>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API Tdata3Int32 : public TdataTupleOf<Tint32, 3, TnumberType::kInt32>
{
public:
  using TdataTupleOf::TdataTupleOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
