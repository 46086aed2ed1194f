#include "Walker.h"

#include "Ident.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t kBlock = 0x10000;
constexpr Tint64 kNoEnd = Tint64(1) << 62;
constexpr std::size_t kHeader = 8;

constexpr TuInt32 kAttn = 0x41542654; // "AT&T"
constexpr TuInt32 kGend = 0x47454E44;
constexpr TuInt32 kPath = 0x50415448;
constexpr TuInt32 kIncl = 0x494E434C;
constexpr TuInt32 kEovc = 0x454F5643;
constexpr TuInt32 kCvoe = 0x43564F45;
constexpr TuInt32 kUnknown = 0x80000000;
constexpr TuInt32 kPatched = 0x80000001;
constexpr TuInt32 kStreamed = 0x80000002;
constexpr TuInt32 kLastMark = 0x80000003;

// Programs that write to a pipe, and so never learn the size, put a number in this range into the header, or 0.
constexpr TuInt32 kPipeSizes = 0x7F000000;

// Flags of a level.
constexpr unsigned char kOpen = 1;   // the size is unknown: a GEND ends it
constexpr unsigned char kOfPipe = 2; // the size is one of a pipe's writer
constexpr unsigned char kWasCut = 4; // the size went past the enclosing group

TuInt32 wordAt(const unsigned char* at)
{
  return TuInt32(at[0]) << 24 | TuInt32(at[1]) << 16 | TuInt32(at[2]) << 8 | TuInt32(at[3]);
}

std::string bytes(Tint64 count)
{
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

bool allZero(const unsigned char* from, std::size_t count)
{
  return std::all_of(from, from + count, [](unsigned char byte) { return byte == 0; });
}

} // namespace

Walker::Walker(Source& source, Receiver& receiver)
  : fSource(source)
  , fReceiver(receiver)
  , fBlock(kBlock)
{
}

void Walker::oddity(Tint64 offset, const std::string& message)
{
  fReceiver.departure(Severity::kOddity, offset, message);
}

void Walker::error(Tint64 offset, const std::string& message)
{
  fReceiver.departure(Severity::kError, offset, message);
}

void Walker::walk()
{
  fLevels.assign(1, {0, kNoEnd, 0, 0, 0, 1, 0});
  fMayBePadded4 = false;
  fSaidTruncated = false;
  bool sawGroup = false;

  for (;;)
  {
    const Level here = fLevels.back();
    const auto depth = static_cast<TuInt32>(fLevels.size() - 1);
    const Tint64 offset = fSource.position();
    const Tint64 room = here.fEnd - offset;
    if (room <= 0)
    {
      if (!leave(false))
        return;
      continue;
    }

    // The header.
    std::array<unsigned char, kHeader> header;
    const auto wanted = static_cast<std::size_t>(std::min<Tint64>(room, kHeader));
    const std::size_t got = fSource.read(header.data(), wanted);
    if (std::exchange(fMayBePadded4, false) && got >= 2 && allZero(header.data(), 2))
    {
      fSource.unread(header.data() + 2, got - 2);
      oddity(offset, "2 bytes of padding more than the alignment asks for");
      continue;
    }
    if (got < wanted)
    {
      if (depth == 0 && !sawGroup)
        error(offset, offset + Tint64(got) == 0 ? "the file is empty" : "the file is too short for a group");
      else if (depth == 0 && got != 0)
        oddity(offset, bytes(Tint64(got)) + " behind the last group");
      else if (got != 0)
      {
        error(offset, "the file ends inside the header of a chunk");
        fSaidTruncated = true;
      }
      endOfFile();
      return;
    }
    if (wanted < kHeader)
    {
      const std::string message = bytes(room) + " at the end of " + idText(here.fId) + " are too few for a chunk";
      allZero(header.data(), wanted) ? oddity(offset, message) : error(offset, message);
      continue;
    }
    const TuInt32 id = wordAt(header.data());
    const TuInt32 sizeField = wordAt(header.data() + 4);
    const unsigned flags = FLidflags(id);
    const std::string_view name(reinterpret_cast<const char*>(header.data()), 4);

    // What stands between chunks.
    if ((id == kEovc || id == kCvoe) && sizeField == kUnknown && sawGroup)
    {
      oddity(offset, "an end marker that ends no chunk");
      continue;
    }
    if (depth == 0 && (flags & kFLidRoot) == 0)
    {
      if (id == kAttn && offset == 0 && (FLidflags(sizeField) & kFLidRoot) != 0)
      {
        oddity(offset, "\"AT&T\" in front of the first group");
        fSource.unread(header.data() + 4, 4);
        continue;
      }
      if (sawGroup)
        oddity(offset, "other bytes behind the last group");
      else
        error(offset, "a file begins with a form, a concatenation or a list, not with " + idText(id));
      return;
    }
    if (id == kGend && sizeField == 0)
    {
      if ((here.fFlags & kOpen) != 0)
      {
        if (!leave(true))
          return;
      }
      else if (room == kHeader)
        oddity(offset, "GEND in a group of known size");
      else
        error(offset, "GEND, but " + idText(here.fId) + " goes on for " + bytes(room - Tint64(kHeader)));
      continue;
    }

    // The id.
    if (id == kGend)
      error(offset, "GEND with a size of " + std::to_string(sizeField));
    else if (id == kPath || id == kIncl)
      error(offset, std::string(name) + " is reserved");
    else if ((flags & kFLidIllegal) != 0)
      error(offset, "illegal use of the reserved id " + std::string(name));
    else if ((flags & kFLidProp) != 0 && (FLidflags(here.fId) & kFLidHoldsProps) == 0)
      error(offset, std::string(name) + " outside a list");
    else if (!isPrintable(id))
      oddity(offset, "the id " + idText(id) + " is not printable");

    // The size.
    Chunk chunk{};
    chunk.fOffset = offset;
    chunk.fId = id;
    chunk.fSizeField = sizeField;
    chunk.fDepth = depth;
    chunk.fMask = std::max<unsigned>(here.fMask, std::max(flags & kFLidAlign, 1U) - 1);
    chunk.fIsGroup = (flags & kFLidGroup) != 0;
    chunk.fHasSize = sizeField < kUnknown;
    const Tint64 start = offset + Tint64(kHeader);
    Tint64 end = here.fEnd;
    unsigned char levelFlags = 0;
    bool isStreamed = false;
    bool isOfPipe = false;
    if (chunk.fHasSize)
    {
      isOfPipe = depth == 0 ? sizeField == 0 || sizeField >= kPipeSizes
                            : depth == 1 && (here.fFlags & kOfPipe) != 0 && sizeField >= kPipeSizes;
      end = depth == 0 && sizeField == 0 ? kNoEnd : start + Tint64(sizeField);
      if (end > here.fEnd)
      {
        if (!isOfPipe)
          error(offset, idText(id) + " goes " + bytes(end - here.fEnd) + " past the end of " + idText(here.fId));
        end = here.fEnd;
        levelFlags = kWasCut;
      }
      if (isOfPipe)
        levelFlags |= kOfPipe;
    }
    else
    {
      levelFlags = kOpen;
      isStreamed = !chunk.fIsGroup && sizeField == kStreamed;
      std::array<char, 16> number;
      std::snprintf(number.data(), number.size(), "0x%08X", unsigned(sizeField));
      if (sizeField > kLastMark)
        error(offset, "the size of " + idText(id) + ", " + number.data() + ", is no length and no mark");
      else if (chunk.fIsGroup ? sizeField == kPatched : !isStreamed)
        chunk.fIsGroup ? oddity(offset, "the size of " + idText(id) + " was never filled in")
                       : error(offset, "the size of " + idText(id) + " was never filled in");
    }

    if (chunk.fIsGroup && end - start < 4)
    {
      if ((levelFlags & kWasCut) == 0)
        error(offset, idText(id) + " is too short for a type id");
      chunk.fIsGroup = false;
    }
    if (chunk.fIsGroup)
    {
      std::array<unsigned char, 4> type;
      if (fSource.read(type.data(), type.size()) < type.size())
      {
        error(offset, "the file ends inside the header of " + idText(id));
        fSaidTruncated = true;
        endOfFile();
        return;
      }
      chunk.fType = wordAt(type.data());
      if (chunk.fType > 0x7FFFFFFF)
        error(start, "the type id " + idText(chunk.fType) + " begins with a byte above 0x7F");
      else if (!isPrintable(chunk.fType))
        oddity(start, "the type id " + idText(chunk.fType) + " is not printable");
      fReceiver.begin(chunk);
      fLevels.push_back({start, end, id, chunk.fType, sizeField, static_cast<unsigned char>(chunk.fMask), levelFlags});
      sawGroup = true;
      continue;
    }

    // A plain chunk.
    fWantsData = fReceiver.begin(chunk);
    bool isPadded = chunk.fHasSize && (levelFlags & kWasCut) == 0;
    if (isStreamed)
    {
      if (!passStreamed(end, chunk.fLength))
        error(offset, "nothing marks the end of " + idText(id));
    }
    else
    {
      chunk.fLength = pass(end - start);
      const Tint64 missing = end - start - chunk.fLength;
      if (missing != 0 && isPadded)
      {
        isPadded = false;
        if (isOfPipe)
          oddity(offset, "the size of " + idText(id) + " stands for the rest of the file");
        else
        {
          error(offset, "the file ends " + bytes(missing) + " before the end of " + idText(id));
          fSaidTruncated = true;
        }
      }
    }
    if (!fReceiver.end(chunk))
      return;
    if (isPadded)
      skipPadding(chunk);
  }
}

// Goes over `count` bytes of a plain chunk; over fewer when the file ends.
Tint64 Walker::pass(Tint64 count)
{
  if (!fWantsData)
    return fSource.skip(count);
  Tint64 done = 0;
  while (done < count)
  {
    const auto piece = static_cast<std::size_t>(std::min<Tint64>(count - done, kBlock));
    const std::size_t got = fSource.read(fBlock.data(), piece);
    fReceiver.data(fBlock.data(), got);
    done += Tint64(got);
    if (got < piece)
      break;
  }
  return done;
}

// Goes over a streamed chunk, up to `end` at most, and counts its bytes. The marker stands at a multiple of 4 bytes;
// writers write one of its two spellings, readers of plain chunks know the other.
bool Walker::passStreamed(Tint64 end, Tint64& length)
{
  std::size_t held = 0;   // bytes in the block that may be the start of the marker
  std::size_t more = 256; // little at first: what is read too much is read again
  for (;;)
  {
    const auto piece = static_cast<std::size_t>(std::min<Tint64>(Tint64(more), end - fSource.position()));
    const std::size_t got = fSource.read(fBlock.data() + held, piece);
    held += got;
    std::size_t at = 0;
    bool found = false;
    for (; !found && at + kHeader <= held; at += 4)
    {
      const TuInt32 word = wordAt(fBlock.data() + at);
      found = (word == kEovc || word == kCvoe) && wordAt(fBlock.data() + at + 4) == kUnknown;
    }
    const bool isLast = piece == 0 || got < piece;
    const std::size_t ahead = found ? at - 4 : isLast ? held : at;
    if (fWantsData && ahead != 0)
      fReceiver.data(fBlock.data(), ahead);
    length += Tint64(ahead);
    if (found)
    {
      fSource.unread(fBlock.data() + ahead + kHeader, held - ahead - kHeader);
      return true;
    }
    if (isLast)
      return false;
    held -= ahead;
    std::memmove(fBlock.data(), fBlock.data() + ahead, held);
    more = std::min(more * 2, kBlock - kHeader);
  }
}

// Goes over the padding behind `chunk`, of which the enclosing group may lack a part, or the file.
void Walker::skipPadding(const Chunk& chunk)
{
  const Tint64 offset = fSource.position();
  const Level& around = fLevels.back();
  const Tint64 padding = chunk.padding(chunk.fLength);
  const Tint64 inside = std::min(padding, around.fEnd - offset);
  std::array<unsigned char, 8> bytesRead;
  const std::size_t got = fSource.read(bytesRead.data(), static_cast<std::size_t>(inside));
  if (inside < padding)
    oddity(offset, "the padding of " + idText(chunk.fId) + " is not counted in the size of " + idText(around.fId));
  if (!allZero(bytesRead.data(), got))
    oddity(offset, "the padding of " + idText(chunk.fId) + " is not zero");
  if (Tint64(got) < inside)
  {
    oddity(offset, "the file ends before the padding of " + idText(chunk.fId));
    fSource.pretend(inside - Tint64(got));
  }
  // What the engine writes without knowing its size is padded to 4, even where 2 is the alignment.
  fMayBePadded4 = chunk.fMask == 1 && ((chunk.fLength + padding) & 2) != 0;
}

// Ends the group at hand; `atMark` when a GEND does. False when the receiver has enough.
bool Walker::leave(bool atMark)
{
  const Level level = fLevels.back();
  fLevels.pop_back();
  const bool isOpen = (level.fFlags & kOpen) != 0;
  if (isOpen && !atMark)
    oddity(fSource.position(), "nothing marks the end of " + idText(level.fId));
  Chunk chunk{};
  chunk.fOffset = level.fStart - Tint64(kHeader);
  chunk.fId = level.fId;
  chunk.fType = level.fType;
  chunk.fSizeField = level.fSizeField;
  chunk.fLength = fSource.position() - level.fStart;
  chunk.fDepth = static_cast<TuInt32>(fLevels.size() - 1);
  chunk.fMask = level.fMask;
  chunk.fIsGroup = true;
  chunk.fHasSize = level.fSizeField < kUnknown;
  if (!fReceiver.end(chunk))
    return false;
  if ((level.fFlags & kWasCut) == 0 && isOpen == atMark)
    skipPadding(chunk);
  return true;
}

// Ends the groups that the end of the file leaves open, and says once why it may not leave them so.
void Walker::endOfFile()
{
  bool saidOpen = false;
  while (fLevels.size() > 1)
  {
    Level& level = fLevels.back();
    const Tint64 missing = level.fEnd - fSource.position();
    const bool isOpen = (level.fFlags & kOpen) != 0;
    const bool isOfPipe = (level.fFlags & kOfPipe) != 0;
    if (isOpen && !std::exchange(saidOpen, true))
      oddity(fSource.position(), "nothing marks the end of " + idText(level.fId));
    else if (isOfPipe && missing > 0)
      oddity(level.fStart - Tint64(kHeader), "the size of " + idText(level.fId) + " stands for the rest of the file");
    else if (!isOpen && missing > 0 && !std::exchange(fSaidTruncated, true))
      error(fSource.position(), "the file ends " + bytes(missing) + " before the end of " + idText(level.fId));
    level.fFlags = kWasCut; // all is said, and no padding follows
    if (!leave(false))
      return;
  }
}
