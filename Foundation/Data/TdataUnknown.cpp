#include "Foundation/Data/TdataUnknown.h"

#include "Foundation/Data/Components.h"
#include "Foundation/Data/Letters.h"
#include "Foundation/Iff/TiffFile.h"
#include "Foundation/Memory/TfootprintInfo.h"

#include <charconv>
#include <climits>
#include <cstring>

LETTER(TdataUnknown, "TdataUnknown", "UNKN", 56, TdataLetter);

void TdataUnknown::reset()
{
  *this = TdataUnknown();
}

void TdataUnknown::_getFootprint(TfootprintInfo& info) const
{
  info.add(typeName(), sizeof *this + fBytes.length(), sizeof *this + fBytes.physicalSize());
}

TorderOfData TdataUnknown::compare(const TdataLetter& other) const
{
  if (other.typeof() != typeof())
    return TorderOfData::kIncompatible;
  const auto& unknown = static_cast<const TdataUnknown&>(other);
  return fTag == unknown.fTag && std::equal(fBytes.begin(), fBytes.end(), unknown.fBytes.begin(), unknown.fBytes.end())
           ? TorderOfData::kSame
           : TorderOfData::kDifferent;
}

// "4142434400000102", the id and the bytes in hexadecimal digits.
void TdataUnknown::appendText(Tstring& text, long) const
{
  char tag[4];
  putBigEndian(tag, fTag.value());
  const auto append = [&text](unsigned char byte) {
    const char digits[] = {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    appendPiece(text, {digits, sizeof digits});
  };
  for (const char each : tag)
    append(static_cast<unsigned char>(each));
  for (const unsigned char each : fBytes)
    append(each);
}

long TdataUnknown::readASCII(TargList& arguments, unsigned int& next, long count)
{
  Tstring text;
  if (endOfArguments(arguments, next, count) == next || !arguments.asString(next, text) || text.length() < 8 ||
      text.length() % 2 != 0)
    return kFailed;
  TuCharArray bytes;
  bytes.changeLogicalSizeTo(unsigned(text.length() / 2));
  const char* digits = text.asC();
  for (unsigned char& byte : bytes)
  {
    if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2)
      return kFailed;
    digits += 2;
  }
  TuInt32 tag;
  getBigEndian(reinterpret_cast<const char*>(bytes.data()), tag);
  fTag = tag;
  bytes.removeAt(0, 4);
  fBytes = std::move(bytes);
  ++next;
  return 0;
}

long TdataUnknown::readBinary(TiffTag tag, unsigned long& size, void*& data)
{
  if (size > UINT_MAX)
    return kFailed;
  TuCharArray bytes;
  bytes.addLast(static_cast<const unsigned char*>(data), unsigned(size));
  fTag = tag;
  fBytes = std::move(bytes);
  data = static_cast<char*>(data) + size;
  size = 0;
  return 0;
}

long TdataUnknown::writeBinary(TiffFile& file)
{
  return file.putChunk(fTag, Tint32(fBytes.length()), fBytes.data());
}
