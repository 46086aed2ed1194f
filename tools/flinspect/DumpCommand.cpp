#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

constexpr std::size_t kPerLine = 16;

// Prints one chunk as xxd would.
class Dump : public Inspection
{
public:
  Dump(Console& console, const Source& source, const std::string& path)
    : Inspection(console, source.name())
    , fPath(path)
  {
  }

  bool begin(const Chunk& chunk) override
  {
    if (!fPath.begin(chunk.fId, chunk.fDepth))
      return false;
    if (chunk.fIsGroup)
      throw Failure(fName, fPath.text() + " is a group, dump shows plain chunks");
    return true;
  }

  void data(const unsigned char* bytes, std::size_t count) override
  {
    while (count != 0)
    {
      const std::size_t taken = std::min(count, kPerLine - fHeld);
      std::copy_n(bytes, taken, fLine.begin() + static_cast<std::ptrdiff_t>(fHeld));
      fHeld += taken;
      bytes += taken;
      count -= taken;
      if (fHeld == kPerLine)
        putLine();
    }
  }

  bool end(const Chunk& chunk) override
  {
    if (fHeld != 0)
      putLine();
    fPath.end(chunk.fDepth);
    return !fPath.isOver();
  }

  bool wasFound() const { return fPath.wasFound(); }

private:
  // "00000000: 464f 524d 0000 00a1 4149 4646 434f 4d54  FORM....AIFFCOMT"
  void putLine()
  {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::array<char, 24> offset;
    std::snprintf(offset.data(), offset.size(), "%08llx: ", static_cast<unsigned long long>(fOffset));
    fText = offset.data();
    for (std::size_t i = 0; i < kPerLine; ++i)
    {
      fText += i < fHeld ? kDigits[fLine[i] >> 4] : ' ';
      fText += i < fHeld ? kDigits[fLine[i] & 15] : ' ';
      if (i % 2 != 0)
        fText += ' ';
    }
    fText += ' ';
    for (std::size_t i = 0; i < fHeld; ++i)
      fText += fLine[i] >= 0x20 && fLine[i] <= 0x7E ? static_cast<char>(fLine[i]) : '.';
    fText += '\n';
    fConsole.put(fText);
    fOffset += Tint64(fHeld);
    fHeld = 0;
  }

  ChunkPath fPath;
  std::array<unsigned char, kPerLine> fLine{};
  std::size_t fHeld = 0;
  Tint64 fOffset = 0;
  std::string fText;
};

} // namespace

int dump(Console& console, Source& source, const std::string& path)
{
  Dump dump(console, source, path);
  Walker(source, dump).walk();
  source.close();
  if (!dump.wasFound())
    throw Failure(source.name(), "no chunk " + path);
  return dump.status();
}
