// The byte stream below the chunks: window, position, bytes put back, reading and writing in turns.

#include "Foundation/Iff/FLfile.h"
#include "Foundation/Platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <thread>
#include <utility>

namespace {

int gPipeRetries = 0;

// The first fill behind a long step: much more would be read in vain when the next step is as long.
constexpr std::size_t kSmallFill = 4096;

// The longest step forward on a file that is read rather than sought.
constexpr Tint64 kReadThrough = 256;

void setWindow(_FLfile* file, const unsigned char* from, const unsigned char* to, Tint64 endPosition)
{
  file->fCur = from;
  file->fEnd = to;
  file->fEndPos = endPosition;
}

// Notes that the file reaches to the present position at least. Where a step went is not known to be in the file; what
// was read or written is.
void raiseMark(_FLfile* file)
{
  const unsigned char* end = file->fPushed ? file->fWaiting.fEnd : file->fEnd;
  const bool sought = !file->fWriting && end == file->fWindow;
  if (file->fMark != kFLnoMark && !file->fInMemory && !sought)
    file->fMark = std::max(file->fMark, FLposition(file));
}

// Gives the bytes put back away and goes on with those that they interrupted.
void dropPushed(_FLfile* file)
{
  setWindow(file, file->fWaiting.fCur, file->fWaiting.fEnd, file->fWaiting.fEndPos);
  std::free(file->fPushed);
  file->fPushed = nullptr;
}

const unsigned char* windowStart(const _FLfile* file)
{
  return file->fInMemory ? file->fBlock : file->fWindow;
}

// The window of a memory file at any position, also behind the block's end.
void placeInBlock(_FLfile* file, Tint64 target)
{
  const unsigned char* end = file->fBlock + file->fBlockSize;
  if (TuInt64(target) <= file->fBlockSize)
    setWindow(file, file->fBlock + target, end, Tint64(file->fBlockSize));
  else
    setWindow(file, end, end, target);
}

// Makes the empty window hold what comes next; `wanted` bytes are enough. False at the end, or with flerrno when the
// system failed (`failed` is set then).
bool fill(_FLfile* file, std::size_t wanted, bool& failed)
{
  if (file->fPushed)
  {
    dropPushed(file);
    if (file->fCur != file->fEnd)
      return true;
  }
  if (file->fInMemory)
    return false;
  raiseMark(file);
  // A stream of the runtime is not read ahead: what the engine does not need is its next reader's.
  const std::size_t most = file->fTransport.fStream ? std::min(wanted, kFLwindowSize) : file->fFill;
  const std::ptrdiff_t got = FLreceive(file, file->fWindow, most);
  if (got <= 0)
  {
    failed = got < 0;
    return false;
  }
  file->fFill = std::min(file->fFill * 2, kFLwindowSize);
  setWindow(file, file->fWindow, file->fWindow + got, file->fEndPos + got);
  return true;
}

// Sets the offset of the source or target to what is `position` in the file.
bool seekSource(const FLtransport& transport, Tint64 position)
{
  if (position > LLONG_MAX - transport.fOrigin)
  {
    errno = EOVERFLOW;
    return false;
  }
  const Tint64 offset = transport.fOrigin + position;
  return transport.fStream ? Platform::seekStream(transport.fStream, offset)
                           : Platform::seekTo(transport.fDescriptor, offset, SEEK_SET) >= 0;
}

} // namespace

int FLsetpiperetries(int count)
{
  return std::exchange(gPipeRetries, std::max(count, 0));
}

std::ptrdiff_t FLreceive(_FLfile* file, void* buffer, std::size_t count)
{
  FLtransport& from = file->fTransport;
  for (int tries = gPipeRetries;; --tries)
  {
    std::ptrdiff_t got;
    if (!from.fStream)
      got = Platform::readSome(from.fDescriptor, buffer, count);
    else
    {
      std::clearerr(from.fStream);
      got = std::ptrdiff_t(std::fread(buffer, 1, count, from.fStream));
      if (got == 0 && std::ferror(from.fStream))
      {
        if (Platform::worthAnotherTry(from.fDescriptor, false))
        {
          ++tries;
          continue;
        }
        got = -1;
      }
    }
    if (got < 0)
      FLfail(kFLioError);
    if (got != 0 || !file->fFifo || tries <= 0)
    {
      file->fSawEnd = file->fSawEnd || got == 0;
      return got;
    }
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}

bool FLsend(_FLfile* file, FLtransport& transport, const void* bytes, std::size_t& count)
{
  std::optional<Platform::PipeSignalHold> hold;
  if (file->fFifo || file->fSecond.isOpen())
    hold.emplace();
  std::size_t done = 0;
  while (done < count)
  {
    const unsigned char* next = static_cast<const unsigned char*>(bytes) + done;
    const std::ptrdiff_t put = Platform::writeSome(transport.fDescriptor, next, count - done);
    if (put <= 0)
    {
      if (put == 0)
        errno = EIO;
      count = done;
      FLfailedWrite(file);
      return false;
    }
    done += std::size_t(put);
  }
  return true;
}

bool FLcloseTransport(FLtransport& transport)
{
  bool good = true;
  if (transport.fBorrowed)
    Platform::restoreMode(transport.fDescriptor, transport.fModeBefore);
  else if (transport.fDescriptor >= 0)
    good = Platform::closeFile(transport.fDescriptor);
  transport = FLtransport{};
  return good;
}

int FLswitchtoreading(_FLfile* file)
{
  if (!file->fReads && !file->fBoth)
    return FLfail(kFLbadMode);
  if (!file->fWriting)
    return 0;
  if (file->fFifo)
    return FLfail(kFLfifo);
  if (const int error = FLdrain(file))
    return error;
  const Tint64 position = FLposition(file);
  raiseMark(file);
  file->fWriting = false;
  file->fOut = file->fOutEnd = nullptr;
  if (file->fInMemory)
    placeInBlock(file, position);
  else
    setWindow(file, file->fWindow, file->fWindow, position);
  return 0;
}

int FLswitchtowriting(_FLfile* file)
{
  if (!file->fWrites && !file->fBoth)
    return FLfail(kFLbadMode);
  if (file->fCur) // it was read so far
  {
    if (file->fFifo)
      return FLfail(kFLfifo);
    if (file->fInMemory ? FLposition(file) > Tint64(file->fBlockSize) : !seekSource(file->fTransport, FLposition(file)))
    {
      errno = file->fInMemory ? EINVAL : errno;
      return FLfail(kFLioError);
    }
  }
  const Tint64 position = FLposition(file);
  if (file->fPushed)
    dropPushed(file);
  file->fCur = file->fEnd = nullptr;
  file->fWriting = true;
  file->fOut = file->fInMemory ? file->fBlock + position : file->fWindow;
  const std::size_t room = file->fInMemory ? file->fBlockSize - std::size_t(position) : kFLwindowSize;
  file->fOutEnd = file->fOut + room;
  file->fEndPos = position + Tint64(room);
  return 0;
}

long FLpeekslow(_FLfile* file, long count)
{
  if (FLbeginreading(file) != 0)
    return -1;
  unsigned char ahead[kFLpeekMost];
  const Tint64 before = FLposition(file);
  const bool failed = FLtake(file, ahead, count) < 0;
  const long came = long(FLposition(file) - before);
  if (FLunread(file, ahead, came) != 0 || failed)
    return -1;
  return came;
}

Tint64 FLtake(_FLfile* file, void* buffer, Tint64 count)
{
  unsigned char* to = static_cast<unsigned char*>(buffer);
  Tint64 done = 0;
  while (done < count)
  {
    const Tint64 here = std::min<Tint64>(count - done, file->fEnd - file->fCur);
    if (here > 0)
    {
      std::memcpy(to + done, file->fCur, std::size_t(here));
      file->fCur += here;
      done += here;
      continue;
    }
    // Much at once goes straight to its place.
    if (!file->fPushed && !file->fInMemory && count - done >= Tint64(kFLwindowSize))
    {
      const std::ptrdiff_t got = FLreceive(file, to + done, std::size_t(count - done));
      if (got < 0)
        return -1;
      if (got == 0)
        break;
      setWindow(file, file->fWindow, file->fWindow, file->fEndPos + got);
      if (file->fMark != kFLnoMark)
        file->fMark = std::max(file->fMark, file->fEndPos);
      done += got;
      continue;
    }
    bool failed = false;
    if (!fill(file, std::size_t(count - done), failed))
    {
      if (failed)
        return -1;
      break;
    }
  }
  return done;
}

int FLunread(_FLfile* file, const void* bytes, long count)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (const int error = FLbeginreading(file))
    return error;
  if (count < 0 || count > FLposition(file))
    return FLfail(kFLbadSize);
  const std::size_t size = std::size_t(count);
  if (size == 0)
    return 0;
  // Usually they are the bytes just read, and still in front of the position.
  const unsigned char* start = file->fPushed ? file->fPushed : windowStart(file);
  if (start && std::size_t(file->fCur - start) >= size && std::memcmp(file->fCur - size, bytes, size) == 0)
  {
    file->fCur -= size;
    return 0;
  }
  const std::size_t left = file->fPushed ? std::size_t(file->fEnd - file->fCur) : 0;
  unsigned char* pushed = size <= PTRDIFF_MAX - left ? static_cast<unsigned char*>(std::malloc(size + left)) : nullptr;
  if (!pushed)
    return FLfail(kFLnoMemory);
  std::memcpy(pushed, bytes, size);
  if (file->fPushed)
  {
    std::memcpy(pushed + size, file->fCur, left);
    std::free(file->fPushed);
  }
  else
    file->fWaiting = {file->fCur, file->fEnd, file->fEndPos};
  file->fPushed = pushed;
  setWindow(file, pushed, pushed + size + left, file->fWaiting.fEndPos - (file->fWaiting.fEnd - file->fWaiting.fCur));
  return 0;
}

long FLread(_FLfile* file, void* buffer, long count)
{
  if (!file)
    return FLfail(kFLbadCall), 0;
  if (FLbeginreading(file) != 0)
    return 0;
  if (count < 0)
    return FLfail(kFLbadSize), 0;
  const Tint64 before = FLposition(file);
  if (FLtake(file, buffer, count) < 0)
    return long(FLposition(file) - before);
  return FLshrank(file) ? 0 : long(FLposition(file) - before);
}

long FLwrite(_FLfile* file, const void* bytes, long count)
{
  if (!file)
    return FLfail(kFLbadCall), 0;
  if (FLbeginwriting(file) != 0)
    return 0;
  if (count < 0)
    return FLfail(kFLbadSize), 0;
  const Tint64 before = FLposition(file);
  std::size_t fits = std::size_t(count);
  if (file->fInMemory)
    fits = std::min(fits, std::size_t(file->fOutEnd - file->fOut));
  if (FLemit(file, bytes, fits) == 0 && fits != std::size_t(count))
  {
    errno = ENOSPC;
    FLfailedWrite(file);
  }
  return long(FLposition(file) - before);
}

int FLfailedWrite(_FLfile* file)
{
  const int code = errno == EPIPE ? kFLbrokenPipe : kFLioError;
  if (file->fFailure == 0)
    file->fFailure = code;
  return FLfail(code);
}

bool FLshrank(const _FLfile* file)
{
  if (!file->fMapping.shrunk())
    return false;
  errno = EIO;
  FLfail(kFLioError);
  return true;
}

int FLdrain(_FLfile* file)
{
  if (!file->fWriting || file->fInMemory)
    return 0;
  const std::size_t held = std::size_t(file->fOut - file->fWindow);
  std::size_t sent = held;
  if (FLsend(file, file->fTransport, file->fWindow, sent))
  {
    file->fEndPos += Tint64(held);
    file->fOut = file->fWindow;
    return 0;
  }
  std::memmove(file->fWindow, file->fWindow + sent, held - sent);
  file->fOut -= sent;
  file->fEndPos += Tint64(sent);
  return flerrno;
}

int FLemit(_FLfile* file, const void* bytes, std::size_t count)
{
  if (std::size_t(file->fOutEnd - file->fOut) >= count)
  {
    FLcopy(file->fOut, bytes, count);
    file->fOut += count;
    return 0;
  }
  if (file->fInMemory)
  {
    errno = ENOSPC;
    return FLfailedWrite(file);
  }
  if (const int error = FLdrain(file))
    return error;
  if (count < kFLwindowSize)
  {
    std::memcpy(file->fOut, bytes, count);
    file->fOut += count;
    return 0;
  }
  std::size_t sent = count;
  const bool good = FLsend(file, file->fTransport, bytes, sent);
  file->fEndPos += Tint64(sent);
  return good ? 0 : flerrno;
}

int FLemitzeros(_FLfile* file, Tint64 count)
{
  static constexpr unsigned char kZeros[8] = {};
  return FLemit(file, kZeros, std::size_t(count));
}

int FLpatch(_FLfile* file, Tint64 position, TuInt32 word)
{
  unsigned char bytes[4];
  FLstoreword(bytes, word);
  const Tint64 back = FLposition(file) - position;
  const unsigned char* start = file->fInMemory ? file->fBlock : file->fWindow;
  if (back <= file->fOut - start)
  {
    std::memcpy(file->fOut - back, bytes, sizeof bytes);
    return 0;
  }
  if (const int error = FLdrain(file))
    return error;
  const Tint64 present = FLposition(file);
  std::size_t sent = sizeof bytes;
  if (seekSource(file->fTransport, position) && FLsend(file, file->fTransport, bytes, sent) &&
      seekSource(file->fTransport, present))
    return 0;
  return FLfailedWrite(file);
}

int FLmove(_FLfile* file, Tint64 target)
{
  const Tint64 position = FLposition(file);
  if (target == position)
    return 0;
  raiseMark(file);
  if (target < 0 || target > kFLlastPosition)
  {
    errno = target < 0 ? EINVAL : EOVERFLOW;
    return FLfail(kFLioError);
  }
  if (file->fWriting)
  {
    if (file->fFifo)
      return FLfail(kFLfifo);
    if (file->fInMemory)
    {
      if (TuInt64(target) > file->fBlockSize)
      {
        errno = EINVAL;
        return FLfail(kFLioError);
      }
      file->fOut = file->fBlock + target;
      return 0;
    }
    if (const int error = FLdrain(file))
      return error;
    if (!seekSource(file->fTransport, target))
      return FLfailedWrite(file);
    file->fEndPos += target - position;
    return 0;
  }

  if (target < position && file->fFifo)
    return FLfail(kFLfifo);
  if (target > position && target - position <= file->fEnd - file->fCur)
  {
    file->fCur += target - position;
    return 0;
  }
  if (file->fPushed)
    dropPushed(file);
  if (file->fInMemory)
  {
    placeInBlock(file, target);
    return 0;
  }
  const Tint64 inside = file->fEndPos - (file->fEnd - file->fWindow); // position of the window's first byte
  if (target >= inside && target <= file->fEndPos)
  {
    file->fCur = file->fWindow + (target - inside);
    return 0;
  }
  if (target > position && (file->fFifo || target - position <= kReadThrough))
  {
    bool failed = false;
    while (FLposition(file) < target)
    {
      const Tint64 here = std::min<Tint64>(target - FLposition(file), file->fEnd - file->fCur);
      file->fCur += here;
      if (here == 0 && !fill(file, std::size_t(target - FLposition(file)), failed))
      {
        if (!failed && !file->fFifo)
          errno = ENODATA;
        return failed ? flerrno : FLfail(file->fFifo ? kFLpastBlock : kFLioError);
      }
    }
    return 0;
  }
  if (!seekSource(file->fTransport, target))
    return FLfail(kFLioError);
  const Tint64 beyond = target - file->fEndPos;
  file->fFill = beyond >= 0 && beyond < Tint64(kFLwindowSize) ? kFLwindowSize : kSmallFill;
  setWindow(file, file->fWindow, file->fWindow, target);
  return 0;
}

int FLseek(_FLfile* file, Tint64 offset, int whence)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (!file->fWriting)
  {
    if (const int error = FLbeginreading(file))
      return error;
  }
  const Tint64 position = FLposition(file);
  Tint64 base = 0;
  if (whence == 1)
    base = position;
  else if (whence == 2)
  {
    if (file->fMark == kFLnoMark)
      return FLfail(kFLunknownSize);
    raiseMark(file);
    base = file->fMark;
    offset = offset == LLONG_MIN ? LLONG_MAX : -offset;
  }
  else if (whence != 0)
    return FLfail(kFLbadCall);
  if (offset > 0 && base > LLONG_MAX - offset)
  {
    errno = EOVERFLOW;
    return FLfail(kFLioError);
  }
  return FLmove(file, base + offset);
}

Tint64 FLtell(_FLfile* file)
{
  return file ? FLposition(file) : (FLfail(kFLbadCall), -1);
}

int FLflush(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  return FLdrain(file);
}

unsigned char* FLgrow(_FLfile* file, std::size_t count, std::size_t keep)
{
  if (count > PTRDIFF_MAX - kFLwindowSize)
    return FLfail(kFLnoMemory), nullptr;
  // Some more than is asked for, so that sizes that creep up do not cost an allocation each.
  const std::size_t size = count + std::min(count / 2, kFLwindowSize) + 1;
  unsigned char* grown = static_cast<unsigned char*>(std::malloc(size));
  if (!grown)
    return FLfail(kFLnoMemory), nullptr;
  if (keep != 0)
    std::memcpy(grown, file->fTransfer, keep);
  std::free(file->fTransfer);
  file->fReservedSize = -1; // it lay in the old buffer
  file->fTransfer = grown;
  file->fTransferSize = size;
  return grown;
}
