// Reads an arbitrary file by an arbitrary program of calls, in a block of memory and in another medium.
//
// Input: byte 0 the medium (bit 6: legacy mode, bit 7: raw transfers both ways), byte 1 the length of the program, the
// program, the file. Each byte of the program is a call (low half) and its count (high half).

#include "FLmedium.h"

#include <climits>
#include <cstring>
#include <tuple>
#include <vector>

namespace {

using Step = std::tuple<int, TuInt32, long, Tint64>; // status, id, size and position

class Walk
{
public:
  // Opens the file, runs the program, then reads what is left.
  Walk(Medium medium, const std::string& mode, const std::string& bytes, const unsigned char* program,
       std::size_t length)
    : fHeld(medium, bytes, true)
    , fFile(FLopen(fHeld.name(), mode.c_str()))
    , fBytes(bytes)
    , fFifo(medium == kFifo)
    , fBoth(mode.back() == '+')
  {
    REQUIRE((fFile == nullptr) == (fBoth && medium == kMapped));
    if (!fFile)
      return;
    std::for_each(program, program + length, [this](unsigned code) { step(code); });
    const std::size_t most = 64 * (bytes.size() + length + 8);
    for (int status = 0; status != kFLnoGroup && (fSteps.size() < most || !fBoth);) // who writes lengthens the file
    {
      REQUIRE(fSteps.size() < most);
      status = step(0x00);
      if (status == kFLok)
        step(0xD1), status = step(0x04);
      else if (status == kFLgroupHeader)
        status = step(0x05);
      if (status != kFLok)
        status = step(0x06);
    }
    REQUIRE(FLclose(fFile) == 0 || fBoth);
  }

  // Whether both saw the same, up to where the rules are not the same for every medium.
  bool agrees(const Walk& other) const
  {
    const auto end = fSteps.begin() + std::ptrdiff_t(std::min(fAlike, other.fAlike));
    return std::equal(fSteps.begin(), end, other.fSteps.begin());
  }

private:
  Held fHeld;
  _FLfile* fFile;
  const std::string& fBytes;
  bool fFifo, fBoth;
  bool fKnown = true; // every position still has the byte of the input
  std::string fLast;  // what was read last, up to fLastEnd
  Tint64 fLastEnd = 0;
  std::vector<Step> fSteps;
  std::size_t fAlike = 0;
  bool fDiffers = false;

  void came(const void* data, Tint64 from, long count)
  {
    const std::string_view bytes(static_cast<const char*>(data), std::size_t(count));
    REQUIRE(!fKnown || count == 0 ||
            (from < Tint64(fBytes.size()) && fBytes.compare(std::size_t(from), bytes.size(), bytes) == 0));
    fLast = bytes;
    fLastEnd = from + count;
  }

  int putBack(long count)
  {
    count = std::min(count, long(fLast.size()));
    fKnown = fKnown && fLastEnd == FLtell(fFile);
    fLastEnd -= std::max(count, 0L);
    const std::string tail(fLast.end() - std::max(count, 0L), fLast.end());
    fLast.resize(fLast.size() - tail.size());
    return FLunread(fFile, tail.data(), count);
  }

  int writeRaw(unsigned code, void* buffer, long count)
  {
    fKnown = fKnown && !fBoth;
    if (FLtell(fFile) > 0x10000) // a hole in front of what is written would count as the file's
      return 0;
    if (code < 0xA0)
      return FLwrite(fFile, buffer, std::min(count, 300L)), flerrno;
    if (code >= 0xE0)
      return FLendwrite(fFile, 0);
    if (void* place = FLbgnwrite(fFile, 64))
      std::memset(place, 'w', 64);
    return flerrno;
  }

  int step(unsigned code)
  {
    constexpr Tint64 kCounts[] = {0, 1, 2, 3, 4, 7, 8, 12, 13, 64, 256, 257, 5000, 70000, LLONG_MAX, -1};
    static unsigned char buffer[70000];
    const Tint64 number = kCounts[code >> 4];
    const long most = long(std::min<Tint64>(number, LONG_MAX));
    const long count = std::min<long>(most, sizeof buffer);
    const unsigned call = code & 15U;
    long got = -1; // of a call that returns a count
    TuInt32 id = 0;
    Tint32 size = 0;
    void* place = nullptr;
    if (call == 3) // its data then follow
      FLbgnget(fFile, nullptr, nullptr);
    const Tint64 before = FLtell(fFile);
    flerrno = 0;
    int status = 0;
    switch (call)
    {
    case 0: status = FLbgnget(fFile, &id, &size); break;
    case 1: got = FLget(fFile, buffer, count); break;
    case 2: place = FLbgnread(fFile, most); break;
    case 3: place = FLgetchunk(fFile, &id, &size); break;
    case 4: status = FLendget(fFile); break;
    case 5: status = FLbgnreadgroup(fFile, &id, &size); break;
    case 6: status = FLendrgroup(fFile); break;
    case 7: status = FLskipgroup(fFile); break;
    case 8: got = FLread(fFile, buffer, count); break;
    case 9: status = putBack(count); break;
    case 10: status = (fKnown = false, FLunread(fFile, "FORM\0\1\0\4TYPE\x80\0\0\2", std::min(count, 16L))); break;
    case 11: status = FLseek(fFile, number, 1); break;
    case 12: status = FLseek(fFile, -number, 1); break;
    case 13: status = FLseek(fFile, number, 0); break;
    case 14: status = FLseek(fFile, number, 2); break;
    default: status = writeRaw(code, buffer, count);
    }
    const int failure = flerrno;
    const Tint64 position = FLtell(fFile);
    const Tint64 end = Tint64(fBytes.size());
    constexpr TuInt64 kListed = 0xF07BFBFFDAB; // the codes that there are
    REQUIRE(position >= 0 && failure >= 0 && failure < 64 && (kListed >> failure & 1U));
    if (got >= 0)
    {
      came(buffer, before, got);
      REQUIRE(count == 0 || (got == count ? failure == 0 : failure != 0 || !fKnown || position >= end));
    }
    else if (call == 2 || call == 3)
    {
      REQUIRE((place != nullptr) == (failure == 0));
      REQUIRE(place || call == 3 || fFifo || failure == kFLioError || position == before);
      if (place)
        came(place, before, call == 2 ? most : long(size));
    }
    else
    {
      const bool fine = status <= kFLend || status == kFLgroupHeader || status == kFLchunkHeader;
      REQUIRE(failure == (fine ? 0 : status));
    }
    status = std::max(status, failure);
    const bool moves = (call > 1 && call < 8 && call != 5) || call > 9;
    fDiffers = fDiffers || failure == kFLfifo || failure == kFLinUse || failure == kFLunknownSize ||
               failure == kFLioError || position > end || (failure && moves) || (call == 15 && fBoth);
    fSteps.emplace_back(status, id, got >= 0 ? got : long(size), position);
    fAlike += !fDiffers;
    return status;
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
  if (size < 2 || size > 60000)
    return 0;
  const std::string mode = std::string("r") + (data[0] & 0x40 ? "l" : "") + (data[0] & 0x80 ? "+" : "");
  const std::size_t length = std::min<std::size_t>(data[1], size - 2);
  const std::string bytes(data + 2 + length, data + size);
  const Walk inBlock(kBlock, mode, bytes, data + 2, length);
  const Walk other(Medium((data[0] & 0x3FU) % kMedia), mode, bytes, data + 2, length);
  REQUIRE(inBlock.agrees(other));
  return 0;
}
