#include "Foundation/Data/TdataTuple.h"

#include "Foundation/Data/Components.h"
#include "Foundation/Data/Letters.h"
#include "Foundation/Iff/TiffFile.h"

LETTER(Tdata2Double, "double2", "DBL2", 56, TdataCompound);
LETTER(Tdata2Float, "float2", "FLT2", 56, TdataCompound);
LETTER(Tdata2Int16, "short2", "SRT2", 56, TdataCompound);
LETTER(Tdata2Int32, "long2", "LNG2", 56, TdataCompound);
LETTER(Tdata3Double, "double3", "DBL3", 56, TdataCompound);
LETTER(Tdata3Float, "float3", "FLT3", 56, TdataCompound);
LETTER(Tdata3Int16, "short3", "SRT3", 56, TdataCompound);
LETTER(Tdata3Int32, "long3", "LNG3", 56, TdataCompound);

TdataTuple::TdataTuple(TnumberType type, unsigned int length)
  : TdataCompound(length)
  , fType(type)
{
}

void TdataTuple::reset()
{
  for (Tdata& child : fChildren)
    child = 0;
}

Tdata TdataTuple::accepted(const Tdata& data) const
{
  if (!data.isNumeric() && !data.isAnimTime())
    throw TbadDataCast();
  return withNumber(fType, [&](auto number) { return Tdata(data.valueAs<decltype(number)>()); });
}

void TdataTuple::appendText(Tstring& text, long perLine) const
{
  withNumber(fType, [&](auto number) {
    for (unsigned int i = 0; i < length(); ++i)
    {
      if (i != 0)
        appendSeparator(text, perLine, i);
      narrow((*this)[i].doubleValue(), number);
      appendNumber(text, number);
    }
  });
}

long TdataTuple::readASCII(TargList& arguments, unsigned int& next, long count)
{
  if (endOfArguments(arguments, next, count) - next < length())
    return kFailed;
  return withNumber(fType, [&](auto number) -> long {
    TtypedArray<double> values;
    values.changeLogicalSizeTo(length());
    for (unsigned int i = 0; i < length(); ++i)
    {
      if (!arguments.asDouble(next + i, values[i]) || !narrow(values[i], number))
        return kFailed;
      widen(number, values[i]);
    }
    for (unsigned int i = 0; i < length(); ++i)
      fChildren[i] = values[i];
    next += length();
    return 0;
  });
}

long TdataTuple::readBinary(TiffTag tag, unsigned long& size, void*& data)
{
  return withNumber(fType, [&](auto number) -> long {
    if (tag != iffTag() || size != length() * sizeof number)
      return kFailed;
    const char* from = static_cast<const char*>(data);
    for (Tdata& child : fChildren)
    {
      from = getBigEndian(from, number);
      double value;
      widen(number, value);
      child = value;
    }
    data = static_cast<char*>(data) + size;
    size = 0;
    return 0;
  });
}

long TdataTuple::writeBinary(TiffFile& file)
{
  return withNumber(fType, [&](auto number) -> long {
    TtypedArray<char> bytes;
    bytes.changeLogicalSizeTo(unsigned(length() * sizeof number));
    char* to = bytes.data();
    for (const Tdata& child : fChildren)
    {
      narrow(child.doubleValue(), number);
      to = putBigEndian(to, number);
    }
    return file.putChunk(iffTag(), Tint32(bytes.length()), bytes.data());
  });
}
