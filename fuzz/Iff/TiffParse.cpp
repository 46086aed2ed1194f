// Parses an arbitrary file with a receiver that answers, and reads on its own, as an arbitrary program says. A walk
// that recurses into groups does the same: events, result and position must be the same.
//
// Input: byte 0 the medium, byte 1 the length of the program, the program, the file. Each event takes a byte of the
// program: what to do (low half) and how much (high half); behind its end they are answered with 0.

#include "FLmedium.h"

#include "Foundation/Iff/FLfile.h"
#include "Foundation/Iff/TiffFile.h"

#include <numeric>
#include <tuple>
#include <vector>

namespace {

using Event = std::tuple<TuInt32, TuInt32, Tint64, int>; // id, type or size, position, what the receiver did gave

class Walk : public TiffParserCallback
{
public:
  Walk(Medium medium, const std::string& bytes, const std::string& program, bool recurses)
    : fHeld(medium, bytes, true)
    , fFile(fHeld.name(), "r")
    , fProgram(program)
    , fMost(64 * (bytes.size() + program.size() + 8))
    , fRecurses(recurses)
  {
    REQUIRE(fFile.isActive());
    fFile.setCallbackObject(this);
    setMethodsToUse(2);
    flerrno = 0;
    const int status = parse();
    REQUIRE(status == kFLend || status == 47 || (status != 0 && status == flerrno));
    fEvents.emplace_back(TuInt32(status), TuInt32(flerrno), FLtell(fFile.file()), 0);
  }

  const std::vector<Event>& events() const { return fEvents; }

  int iffVListMethod2(TiffFile&, TiffTag group, TiffTag type) override { return event(group.value(), type.value()); }
  int iffVFormMethod2(TiffFile&, TiffTag group, TiffTag type) override { return event(group.value(), type.value()); }
  int iffVLeafMethod2(TiffFile&, TiffTag id, Tint32 size) override { return event(id.value(), TuInt32(size)); }

private:
  Held fHeld;
  TiffFile fFile;
  std::string fProgram;
  std::size_t fMost;
  bool fRecurses;
  std::vector<Event> fEvents; // and at last the outcome

  int parse() { return fRecurses ? level(false) : fFile.endParse(); }

  // Walks one level; an inner one was entered by this walk.
  int level(bool inner)
  {
    for (;;)
    {
      TuInt32 id = 0, type = 0;
      Tint32 size = 0;
      const int header = FLbgnget(fFile.file(), &id, &size);
      int status = header;
      if (header == kFLok && (status = iffLeafMethod(fFile, id, size)) == 0)
        status = FLendget(fFile.file());
      else if (header == kFLend)
        iffLeafMethod(fFile, TiffTag::kGEND, 0);
      else if (header == kFLincomplete && !fFile.file()->fLevel->fParent)
        return flerrno = 0, kFLend;
      else if (header == kFLgroupHeader && (status = FLbgnreadgroup(fFile.file(), &type, nullptr)) == 0)
      {
        const bool isForm = FLidflags(id) & (kFLidForm | kFLidProp);
        status = isForm ? iffFormMethod(fFile, id, type) : iffListMethod(fFile, id, type);
        if (status == 0 && (status = level(true)) == kFLend)
          status = FLendrgroup(fFile.file());
        else if (status == kFLend && inner && FLendrgroup(fFile.file()) != 0) // it ends with this level
          status = flerrno;
      }
      if (status == 0)
        continue;
      if (status != kFLend && status != 47)
        flerrno = status;
      return status;
    }
  }

  int event(TuInt32 id, TuInt32 detail)
  {
    const std::size_t number = fEvents.size();
    REQUIRE(number < fMost);
    fEvents.emplace_back(id, detail, FLtell(fFile.file()), 0);
    const unsigned code = number < fProgram.size() ? static_cast<unsigned char>(fProgram[number]) : 0;
    constexpr long kCounts[] = {0, 1, 2, 4, 7, 12, 64, 300, 5000, -1};
    const long count = kCounts[(code >> 4) % std::size(kCounts)];
    static unsigned char buffer[5000];
    TiffTag tag;
    Tint32 size = 0;
    TuInt32 type = 0;
    int gave = 0;
    switch (code & 15U)
    {
    case 1: return 1;
    case 2: return 47;
    case 3: return -3;
    case 4: gave = std::accumulate(buffer, buffer + fFile.get(buffer, count), 0); break;
    case 5: gave = int(fFile.getString(reinterpret_cast<char*>(buffer), count)); break;
    case 6: gave = fFile.sharedGet(count) != nullptr; break;
    case 7: gave = fFile.readChunk(&size) ? size : -1; break;
    case 8: gave = fFile.readTypedChunk(&size, &type) ? size : -1; break;
    case 9: gave = fFile.endGet(); break;
    case 10: gave = fFile.skipGroup(); break;
    case 11: gave = fFile.beginReadGroup(tag) + (fFile.getTypedChunk(tag, &size, &type) != nullptr); break;
    case 12: gave = fFile.endReadGroup(); break;
    case 13: gave = parse(); break;
    case 14: setMethodsToUse(int(count) % 4); break;
    case 15: gave = count == 300 ? fFile.close() : 0; break;
    default: break;
    }
    std::get<3>(fEvents[number]) = int(TuInt32(gave) + type);
    return 0;
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
  if (size < 2 || size > 60000)
    return 0;
  const Medium medium = Medium(data[0] % kMedia);
  const std::size_t length = std::min<std::size_t>(data[1], size - 2);
  const std::string program(data + 2, data + 2 + length), bytes(data + 2 + length, data + size);
  REQUIRE(Walk(medium, bytes, program, false).events() == Walk(medium, bytes, program, true).events());
  return 0;
}
