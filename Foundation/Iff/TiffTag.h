/// \file
/// TiffTag: the four-character id of a chunk or group, as a value, with the well-known ones as constants.
///
/// Use it wherever ids are named, compared or kept. It is one number, the first character in the most significant byte,
/// so that everything about it is known at compile time and costs what a number costs. The trap: the order of tags is
/// that of the numbers, the same as of the texts only as long as all four characters are ASCII.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <type_traits>

/// The four characters of an id as a number: "FOR4" is 0x464F5234.
///
/// \code
///   if (tag == TiffTag::kFOR4 || tag == "BMHD") …
///   if ((tag & TiffTag::kGMSK) == TiffTag::kLISx) …    // "LIST", "LIS4" or "LIS8"
///   switch (tag.value()) { case TiffTag::kBODY.value(): … }
///   std::cout << "unknown chunk " << tag;
/// \endcode
class TiffTag
{
public:
  /// The tag 0.
  constexpr TiffTag() noexcept = default;

  /// The id as the engine gives it; a wider number loses its upper bits.
  template <class Integer, class = std::enable_if_t<std::is_integral_v<Integer>>>
  constexpr TiffTag(Integer value) noexcept
    : fValue(static_cast<TuInt32>(value))
  {
  }
  constexpr TiffTag(char first, char second, char third, char fourth) noexcept
    : fValue(byte(first) << 24 | byte(second) << 16 | byte(third) << 8 | byte(fourth))
  {
  }

  /// The first four characters of \p text, which must have as many. What a shorter or null text lacks is taken for zero
  /// bytes; what lies behind the four, or behind a terminating zero before them, is not read.
  constexpr TiffTag(const char* text) noexcept
  {
    for (int shift = 24; text && *text && shift >= 0; shift -= 8)
      fValue |= byte(*text++) << shift;
  }
  constexpr TiffTag(std::string_view text) noexcept
  {
    for (std::size_t i = 0; i < 4 && i < text.size(); ++i)
      fValue |= byte(text[i]) << (24 - 8 * i);
  }

  constexpr TuInt32 value() const noexcept { return fValue; }
  constexpr void setValue(TuInt32 value) noexcept { fValue = value; }

  /// The four characters, whatever bytes they are, and a terminating zero. What asC() and a view give lives in here.
  struct Ttext
  {
    char fCharacters[5];

    constexpr const char* asC() const noexcept { return fCharacters; }
    constexpr operator std::string_view() const noexcept { return {fCharacters, 4}; }
  };
  constexpr Ttext valueTchar() const noexcept
  {
    return {{char(fValue >> 24), char(fValue >> 16 & 0xFF), char(fValue >> 8 & 0xFF), char(fValue & 0xFF), 0}};
  }

  friend constexpr bool operator==(TiffTag a, TiffTag b) noexcept { return a.fValue == b.fValue; }
  friend constexpr bool operator!=(TiffTag a, TiffTag b) noexcept { return a.fValue != b.fValue; }
  friend constexpr bool operator<(TiffTag a, TiffTag b) noexcept { return a.fValue < b.fValue; }
  friend constexpr bool operator>(TiffTag a, TiffTag b) noexcept { return a.fValue > b.fValue; }
  friend constexpr bool operator<=(TiffTag a, TiffTag b) noexcept { return a.fValue <= b.fValue; }
  friend constexpr bool operator>=(TiffTag a, TiffTag b) noexcept { return a.fValue >= b.fValue; }

  /// With kGMSK: the family of a group id.
  friend constexpr TiffTag operator&(TiffTag a, TiffTag b) noexcept { return a.fValue & b.fValue; }

// The well-known ids: kBODY is "BODY". The last of a family's ids, "FORx" and so on, ends in a zero byte instead: it is
// what kGMSK makes of the others. kGEND and kEOVC mark ends of what was written without a size, kCPRT holds rights.
// clang-format off
#define FOUNDATION_TAGS(OWN, OTHER)                                                                                    \
  OWN(kFORM) OWN(kFOR4) OWN(kFOR8) OWN(kCAT4) OWN(kCAT8) OWN(kLIST) OWN(kLIS4) OWN(kLIS8) OWN(kPROP) OWN(kPRO4)        \
  OWN(kPRO8) OWN(kPATH) OWN(kINCL) OWN(kGEND) OWN(kEOVC) OWN(kAIFF) OWN(kAIFC) OWN(kAUTH) OWN(kNAME) OWN(kANNO)        \
  OWN(kCOMM) OWN(kSSND) OWN(kCOMT) OWN(kDATE) OWN(kBODY) OWN(kFVER) OWN(kFILE) OWN(kDATA) OWN(kMANY) OWN(kUSER)        \
  OWN(kWDGT) OWN(kCIMG) OWN(kTBHD) OWN(kFLDS) OWN(kCMAP) OWN(kRAYT) OWN(kTBMP) OWN(kRGBA) OWN(kZBUF) OWN(kABUF)        \
  OWN(kICON) OWN(kRGB2) OWN(kFONT) OWN(kFHDR) OWN(kFCHR) OWN(kMDLF) OWN(kMHDR) OWN(kSGRP) OWN(kPGSH) OWN(kSHEL)        \
  OWN(kSHDR) OWN(kVRTX) OWN(kEDGE) OWN(kPOLY) OWN(kCURV) OWN(kSURF) OWN(kTBUF) OWN(kRPBM) OWN(kGPBM) OWN(kBPBM)        \
  OWN(kAPBM) OWN(kHTXT) OWN(kPATN) OWN(kPBGD) OWN(kPAGE) OWN(kPDEF) OWN(kSHOW) OWN(kSTYL) OWN(kFTXT) OWN(kRECT)        \
  OWN(kCIRC) OWN(kCARC) OWN(kRCRV) OWN(kSIMG) OWN(kLINK) OWN(kASDG) OWN(kPROJ) OWN(kGUIO) OWN(kMRPH) OWN(kPREV)        \
  OWN(kOUTP) OWN(kCOLR) OWN(kGRUP) OWN(kFRAM) OWN(kSHAP)                                                               \
  OTHER(kCAT, "CAT ") OTHER(kFORx, "FOR") OTHER(kCATx, "CAT") OTHER(kLISx, "LIS") OTHER(kPROx, "PRO")                  \
  OTHER(kGMSK, 0xFFFFFF00U) OTHER(kZERO, 0) OTHER(kCPRT, "(c) ")
// clang-format on
#define FOUNDATION_DECLARE_OWN_TAG(name) static const TiffTag name;
#define FOUNDATION_DECLARE_TAG(name, value) static const TiffTag name;
  FOUNDATION_TAGS(FOUNDATION_DECLARE_OWN_TAG, FOUNDATION_DECLARE_TAG)
#undef FOUNDATION_DECLARE_OWN_TAG
#undef FOUNDATION_DECLARE_TAG

private:
  static constexpr TuInt32 byte(char c) noexcept
  {
    return static_cast<unsigned char>(c);
  }

  TuInt32 fValue = 0;
};

#define FOUNDATION_DEFINE_OWN_TAG(name) inline constexpr TiffTag TiffTag::name(&#name[1]);
#define FOUNDATION_DEFINE_TAG(name, value) inline constexpr TiffTag TiffTag::name(value);
FOUNDATION_TAGS(FOUNDATION_DEFINE_OWN_TAG, FOUNDATION_DEFINE_TAG)
#undef FOUNDATION_DEFINE_OWN_TAG
#undef FOUNDATION_DEFINE_TAG
#undef FOUNDATION_TAGS

/// Writes the four characters; those that are not printable ASCII, and '\', as \\xNN.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, TiffTag tag);

template <>
struct std::hash<TiffTag>
{
  std::size_t operator()(TiffTag tag) const noexcept { return tag.value(); }
};

static_assert(sizeof(TiffTag) == 4 && std::is_trivially_copyable_v<TiffTag>, "a tag is a number");
