// A plug-in with two kinds of values of its own: a time that is attached to an object, and a letter for a span of
// frames. Their records and the letter's entry make them known when the plug-in is loaded, and go with it.
#include <Foundation/Data/TargList.h>
#include <Foundation/Data/TblindData.h>
#include <Foundation/Data/Tdata.h>
#include <Foundation/Data/TmetaLetter.h>
#include <Foundation/Data/Tmetaclass.h>
#include <Foundation/Iff/TiffFile.h>
#include <Foundation/Time/TanimTime.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <ostream>

namespace {

template <class Class>
void* create(Tmetaclass* requested)
{
  Class* made = Class::fTypeid->isa(requested) ? new (std::nothrow) Class : nullptr;
  return made ? made->cast(requested) : nullptr;
}

class TblindTimeData : public TblindDataOf<TanimTime>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override { return fTypeid; }
  void* cast(Tmetaclass* type) override { return type == fTypeid ? this : TblindData::cast(type); }
  TblindData* copy() const override { return new TblindTimeData(*this); }
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override { out << value(); }
};

Tmetaclass timeRecord(&TblindTimeData::fTypeid, "TblindTimeData", sizeof(TblindTimeData), create<TblindTimeData>, 0, 0,
                      &TblindData::fTypeid);
Tmetaclass* TblindTimeData::fTypeid = &timeRecord;

//! [letter]
// The frames from one to another, both of which belong to it. What is added to it, it covers too.
class TdataFrames : public TdataLetter
{
public:
  void reset() override { *this = TdataFrames(); }
  TdataLetter* copy() const override { return new TdataFrames(*this); }
  Tmetaclass* typeof() const override { return fTypeid; }
  void* cast(Tmetaclass* type) override { return type == fTypeid ? this : TdataLetter::cast(type); }
  static Tmetaclass* fTypeid;

  TorderOfData compare(const TdataLetter& other) const override
  {
    if (other.typeof() != fTypeid)
      return TorderOfData::kIncompatible;
    const auto& [first, last] = static_cast<const TdataFrames&>(other).fEnds;
    return fEnds[0] == first && fEnds[1] == last ? TorderOfData::kSame : TorderOfData::kDifferent;
  }

  // "12 48"
  void appendText(Tstring& text, long) const override
  {
    char digits[32];
    char* end = std::to_chars(digits, digits + 15, fEnds[0]).ptr;
    *end++ = ' ';
    text += std::string_view(digits, std::to_chars(end, digits + sizeof digits, fEnds[1]).ptr);
  }
  long readASCII(TargList& arguments, unsigned int& next, long count) override
  {
    Tint32 first, last;
    if ((count >= 0 && count < 2) || !arguments.asInt32(next, first) || !arguments.asInt32(next + 1, last))
      return kFailed;
    fEnds[0] = first;
    fEnds[1] = last;
    next += 2;
    return 0;
  }

  // Two numbers of 4 bytes, big-endian.
  long readBinary(TiffTag tag, unsigned long& size, void*& data) override
  {
    if (tag != iffTag() || size != 8)
      return kFailed;
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (Tint32& end : fEnds)
    {
      end = Tint32(TuInt32(bytes[0]) << 24 | TuInt32(bytes[1]) << 16 | TuInt32(bytes[2]) << 8 | bytes[3]);
      bytes += 4;
    }
    data = static_cast<char*>(data) + size;
    size = 0;
    return 0;
  }
  long writeBinary(TiffFile& file) override
  {
    char bytes[8];
    for (int i = 0; i < 8; ++i)
      bytes[i] = char(TuInt32(fEnds[i / 4]) >> (24 - i % 4 * 8) & 0xFF);
    return file.putChunk(iffTag(), sizeof bytes, bytes);
  }

protected:
  bool combine(ToperationOnData operation, const TdataLetter& other) override
  {
    if (operation != ToperationOnData::kAdd || other.typeof() != fTypeid)
      return false;
    const auto& [first, last] = static_cast<const TdataFrames&>(other).fEnds;
    fEnds[0] = std::min(fEnds[0], first);
    fEnds[1] = std::max(fEnds[1], last);
    return true;
  }

private:
  Tint32 fEnds[2] = {0, 0};
};

Tmetaclass framesRecord(&TdataFrames::fTypeid, "frames", sizeof(TdataFrames), create<TdataFrames>,
                        TiffTag("FRMS").value(), 0, &TdataLetter::fTypeid);
Tmetaclass* TdataFrames::fTypeid = &framesRecord;
TmetaLetter framesLetter(&framesRecord); // behind the record, which it asks for its name
//! [letter]

} // namespace
