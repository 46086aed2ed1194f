/// \file
/// TdataUnknown: a chunk that no kind of letter claims, as a letter.

#pragma once

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Data/TdataLetter.h"

/// The id and the bytes of a chunk, to be written back as they were. Two compare equal or not; there is nothing else
/// that could be done with them.
class FOUNDATION_API TdataUnknown : public TdataLetter
{
public:
  /// An empty chunk.
  explicit TdataUnknown(TiffTag tag = "UNKN") noexcept
    : fTag(tag)
  {
  }

  const TuCharArray& bytes() const noexcept { return fBytes; }
  TuCharArray& bytes() noexcept { return fBytes; }

  /// The id of the chunk.
  TiffTag iffTag() const override { return fTag; }

  void reset() override;
  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  void _getFootprint(TfootprintInfo& info) const override;
  TorderOfData compare(const TdataLetter& other) const override;
  long readASCII(TargList& arguments, unsigned int& next, long count) override;
  long readBinary(TiffTag tag, unsigned long& size, void*& data) override; ///< any tag
  long writeBinary(TiffFile& file) override;
  void appendText(Tstring& text, long perLine) const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  TiffTag fTag;
  TuCharArray fBytes;
};
