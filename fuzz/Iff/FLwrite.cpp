// Writes by an arbitrary program of calls, into a block of memory, a file and a fifo, and reads what was written.
//
// Input: byte 0 bit 0 raw transfers both ways, bit 1 a block of four times as many bytes as byte 1 says, then pairs of
// bytes: a call (low half) with its id (high half), and a count.

#include "FLmedium.h"

#include <cstring>
#include <vector>

namespace {

constexpr std::size_t kMostData = 100000; // of one program

constexpr TuInt32 kGroups[] = {0x464F524D, 0x464F5234, 0x464F5238, 0x43415420, 0x43415434, 0x4C495354,
                               0x4C495338, 0x50524F50, 0x50524F34, 0x464F5232, 0x54455854, 0x50415448};
constexpr TuInt32 kChunks[] = {0x54455854, 0x464F5258, 0, 0xFFFFFFFF, 0x47454E44, 0x494E434C, 0x464F524D};

class Program
{
public:
  // What is open at the end is ended here, or left to FLclose.
  Program(Medium medium, std::size_t room, const char* mode, const unsigned char* code, std::size_t length, bool ends)
    : fHeld(medium, std::string(room, '\0'), false)
    , fFile(FLopen(fHeld.name(), mode))
    , fFifo(medium == kFifo)
  {
    REQUIRE(fFile);
    for (; length >= 2; code += 2, length -= 2)
      step(code[0] & 15U, code[0] >> 4, code[1]);
    const std::size_t calls = statuses.size();
    while (ends && fBegun.size() > 1)
      end();
    statuses.resize(calls);
    const Tint64 last = FLtell(fFile);
    flerrno = 0;
    const bool closed = FLclose(fFile) == 0;
    REQUIRE(closed == (flerrno == 0));
    good = good && closed;
    written = fHeld.contents();
    if (medium == kBlock)
      written.resize(std::size_t(last));
    if (good && !wild && fReadable && ends)
      REQUIRE(readAll(FLopen(memoryName(written.data(), written.size()).c_str(), "r")) == fModel + ".");
  }

  std::vector<long> statuses; // of the calls
  std::string written;
  bool good = true;  // nothing failed that leaves the file incomplete
  bool wild = false; // there were calls whose effects depend on the medium

private:
  struct Begun
  {
    Tint64 start;
    unsigned mask;
    bool unknown, group;
    std::size_t dataAt; // in the model
  };

  Held fHeld;
  _FLfile* fFile;
  bool fFifo;
  bool fReadable = true; // a reader sees the ends of all unknown sizes
  std::string fModel;    // what walk tells of the file
  std::vector<Begun> fBegun{{0, 1, false, true, 0}};
  std::size_t fUsed = 0;

  bool note(long status, bool succeeded)
  {
    REQUIRE(succeeded == (flerrno == 0));
    statuses.push_back(status);
    return succeeded;
  }

  bool note(int status) { return note(status, status == 0); }

  void begun(TuInt32 id, TuInt32 word, bool unknown, bool group)
  {
    fModel += text(id) + (group ? ":" + text(word) + "[" : "=");
    const unsigned flags = FLidflags(id);
    const unsigned own = flags & kFLidGroup ? (flags & kFLidAlign) - 1 : 0;
    fBegun.push_back(
      {FLtell(fFile) - (group ? 4 : 0), std::max(own, fBegun.back().mask), unknown, group, fModel.size()});
    fReadable = fReadable && (group || !(flags & kFLidGroup)) && !(fFifo && unknown && !group);
  }

  void end()
  {
    const Begun last = fBegun.back();
    const TuInt32 count = TuInt32(FLtell(fFile) - last.start);
    flerrno = 0;
    good = note(last.group ? FLendwritegroup(fFile) : FLendputchunk(fFile)) && good;
    fBegun.pop_back();
    const TuInt32 mask = last.mask;
    fReadable = fReadable && !(last.unknown && ((count + mask) & ~mask) != ((count + (mask | 3)) & ~(mask | 3)));
    fModel += last.group ? ']' : ' ';
  }

  void whole(TuInt32 id, const std::string& data)
  {
    fModel += text(id) + "=" + data + " ";
    fReadable = fReadable && !(FLidflags(id) & kFLidGroup);
  }

  // Goes back in the open chunk, reads half of the bytes there or none, and writes others over the rest.
  void rewrite(const std::string& data, bool reads)
  {
    const std::size_t inside = fBegun.back().group ? 0 : fModel.size() - fBegun.back().dataAt;
    const std::size_t count = std::min(inside, data.size());
    const std::size_t from = fModel.size() - count;
    if (FLseek(fFile, -Tint64(count), 1) != 0)
      return;
    std::string found(reads ? count / 2 : 0, '\0');
    found.resize(std::size_t(FLread(fFile, found.data(), long(found.size()))));
    REQUIRE(!good || wild || fModel.compare(from, found.size(), found) == 0);
    const std::size_t rest = count - found.size();
    if (FLput(fFile, data.data(), long(rest)) == long(rest))
      fModel.replace(from + found.size(), rest, data, 0, rest);
    else
      FLseek(fFile, Tint64(rest), 1);
  }

  void step(unsigned call, unsigned which, unsigned number)
  {
    const TuInt32 group = kGroups[which % std::size(kGroups)];
    const TuInt32 chunk = kChunks[which % std::size(kChunks)];
    const std::size_t count = std::min<std::size_t>(call == 5 ? 300 * number : number, kMostData - fUsed);
    fUsed += count;
    const std::string data(count, char('a' + number % 26));
    const Tint32 size = Tint32(count);
    flerrno = 0;
    if (call < 2)
    {
      const TuInt32 type = call == 0 ? number : 0x54595045;
      if (note(call == 0 ? FLbgnwritegroup(fFile, group, type) : FLbgnwritegroupsize(fFile, group, type, size)))
        begun(group, type, call == 0, true);
    }
    else if (call < 4)
    {
      if (note(FLbgnputchunk(fFile, chunk, call == 2 ? -1 : size)))
        begun(chunk, 0, call == 2, false);
    }
    else if (call < 6)
    {
      const long zero = which & 1;
      const long status = zero ? FLputs(fFile, data.c_str()) : FLput(fFile, data.data(), size);
      if (note(status, flerrno == 0 && status == size + zero))
        fModel.append(data.c_str(), count + std::size_t(zero));
    }
    else if (call == 6 && fBegun.size() > 1)
      end();
    else if (call == 7)
    {
      void* place = FLbgnbufchunk(fFile, chunk, size);
      if (!note(place != nullptr, place != nullptr))
        return;
      std::memcpy(place, data.data(), count);
      const Tint32 actual = which > 12 ? -1 : which > 8 ? size / 2 : size;
      good = note(FLendbufchunk(fFile, actual)) && good;
      if (actual >= 0)
        whole(chunk, data.substr(0, std::size_t(actual ? actual : size)));
    }
    else if (call == 8)
    {
      if (note(FLputtypedchunk(fFile, chunk, size, data.data(), group)))
        whole(chunk, std::string(reinterpret_cast<const char*>(&group), 4) + data.substr(4));
    }
    else if (call == 9)
      rewrite(data, which & 1);
    else if (call == 10)
      note(FLflush(fFile));
    else if (call == 11 && !fBegun.back().group) // another way to write bytes of the open chunk
    {
      if (void* place = FLbgnwrite(fFile, size))
      {
        std::memcpy(place, data.data(), count);
        if (note(FLendwrite(fFile, size)))
          fModel += data;
      }
    }
    else if (call > 11) // calls that do not belong together
    {
      wild = true;
      void* place = which == 0 ? FLbgnbufchunk(fFile, chunk, size) : which == 1 ? FLbgnwrite(fFile, size) : nullptr;
      if (place)
        std::memcpy(place, data.data(), count);
      else if (which < 6)
        FLseek(fFile, Tint64(number), int(which) - 3);
      else if (which < 10)
        FLwrite(fFile, data.data(), size);
      else
        which < 13 ? FLendbufchunk(fFile, size) : FLendwrite(fFile, size);
    }
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
  if (size < 2)
    return 0;
  const char* mode = data[0] & 1 ? "w+" : "w";
  const bool narrow = data[0] & 2;
  const Program inBlock(kBlock, narrow ? 4U * data[1] : 2 * kMostData, mode, data + 2, size - 2, true);
  const Program inFile(kPath, 0, mode, data + 2, size - 2, false);
  if (!narrow && !inBlock.wild)
    REQUIRE(inFile.statuses == inBlock.statuses && inFile.good == inBlock.good &&
            (!inFile.good || inFile.written == inBlock.written));
#ifndef _WIN32
  const Program inFifo(kFifo, 0, "w", data + 2, size - 2, true);
#endif
  return 0;
}
