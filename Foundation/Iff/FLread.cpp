// Reading: headers, chunk data, groups.

#include "Foundation/Iff/FLfile.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr TuInt32 kFram = 0x4652414D; // "FRAM", "GRUP", "SHAP": chunks of old files that lie about their size
constexpr TuInt32 kGrup = 0x47525550;
constexpr TuInt32 kShap = 0x53484150;
constexpr long kLegacyLookAhead = 4096;

bool isLegacy(TuInt32 id)
{
  return id == kFram || id == kGrup || id == kShap;
}

void report(const FLcontext* level, TuInt32* id, Tint32* size)
{
  if (id)
    *id = level->fId;
  if (size)
    *size = level->fSize;
}

// The distance from the data of an old chunk, which begin behind the header at the position, to the next such chunk;
// -1 when none is near, -2 with flerrno.
long distanceToNext(_FLfile* file, Tint64 room)
{
  const long most = long(std::min<Tint64>(8 + kLegacyLookAhead, room));
  const long ahead = FLpeek(file, most);
  if (ahead < 0)
    return -2;
  for (long at = 8; at + 4 <= ahead; at += 2)
  {
    if (isLegacy(FLloadword(file->fCur + at)))
      return at - 8;
  }
  return -1;
}

// FLbgnget without short cuts.
[[gnu::noinline]] int readHeader(_FLfile* file, TuInt32* id, Tint32* size)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (!file->fReads)
    return FLfail(kFLbadMode);
  if (const int error = FLbeginreading(file))
    return error;
  FLcontext* level = file->fLevel;
  if (level->fFlags & kFLpending)
  {
    if (level->fId == kFLgend)
      return kFLend;
    report(level, id, size);
    return level->fFlags & kFLidGroup ? kFLgroupHeader : kFLok;
  }
  if (FLshrank(file))
    return kFLioError;

  const Tint64 position = FLposition(file);
  const Tint64 room = level->fLimit == kFLnoLimit ? kFLunbounded : level->fLimit - position;
  if (room == 0)
    return kFLend;
  if (room < 8)
    return FLfail(kFLbadBlock);
  const long ahead = FLpeek(file, 8);
  if (ahead < 8)
    return ahead < 0 ? flerrno : kFLend;
  if (FLshrank(file))
    return kFLioError;
  const TuInt32 chunkId = FLloadword(file->fCur);
  Tint32 chunkSize = Tint32(FLloadword(file->fCur + 4));
  if (file->fLegacy && isLegacy(chunkId) && level->fParent)
  {
    const long distance = distanceToNext(file, room);
    if (distance == -2)
      return flerrno;
    if (distance >= 0)
      chunkSize = Tint32(distance);
  }

  if (chunkSize < 0 && chunkSize > FL_SIZE_UNKNOWN + 3)
    return FLfail(level->fParent ? kFLbadSize : kFLbadRoot);
  if (chunkSize >= 0 && chunkSize + Tint64(8) > room)
    return FLfail(kFLbadSize);
  unsigned flags = 0;
  if (const int error = FLclassify(level, chunkId, flags))
    return FLfail(error);
  TuInt32 type = 0;
  if (flags & kFLidGroup)
  {
    if (chunkSize >= 0 && chunkSize < 4)
      return FLfail(kFLbadSize);
    if (room < 12)
      return FLfail(kFLbadBlock);
    const long withType = FLpeek(file, 12);
    if (withType < 12)
      return withType < 0 ? flerrno : FLfail(kFLincomplete);
    type = FLloadword(file->fCur + 8);
  }
  else if (chunkId == kFLgend)
  {
    FLcontext* group = level->fParent;
    const Tint64 end = position + 8;
    if (chunkSize != 0)
      return FLfail(kFLbadEndMarker);
    if (group->fSize >= 0 && end != level->fLimit)
      return FLfail(kFLbadBlockEnd);
    if (group->fSize == FL_SIZE_PATCHED && end - level->fStart + 4 <= 0x7FFFFFFF)
    {
      group->fSize = Tint32(end - level->fStart + 4);
      group->fChunkEnd = level->fLimit = end;
    }
  }

  file->fCur += flags & kFLidGroup ? 12 : 8;
  level->fFlags = flags | kFLpending;
  level->fId = chunkId;
  level->fSize = chunkSize;
  level->fType = type;
  level->fChunkStart = position + 8;
  level->fChunkEnd = chunkSize >= 0 ? level->fChunkStart + chunkSize : level->fLimit;
  level->fChunkMask = FLmaskof(level, flags);
  if (chunkId == kFLgend)
    return kFLend;
  report(level, id, size);
  return flags & kFLidGroup ? kFLgroupHeader : kFLok;
}

// FLget without short cuts.
[[gnu::noinline]] long readData(_FLfile* file, void* buffer, long count)
{
  if (!file)
    return FLfail(kFLbadCall), 0;
  FLcontext* level = file->fLevel;
  if (!(level->fFlags & kFLpending) || level->fId == kFLgend)
    return FLfail(kFLnoChunk), 0;
  if (count < 0)
    return FLfail(kFLbadSize), 0;
  if (FLbeginreading(file) != 0)
    return 0;
  const Tint64 position = FLposition(file);
  const Tint64 left = level->fChunkEnd == kFLnoLimit ? kFLnoLimit : std::max<Tint64>(level->fChunkEnd - position, 0);
  const bool tooMuch = count > left;
  const bool failed = FLtake(file, buffer, std::min<Tint64>(count, left)) < 0;
  if (FLshrank(file))
    return 0;
  if (tooMuch && !failed)
    FLfail(kFLpastBlock);
  return long(FLposition(file) - position);
}

void endChunk(FLcontext* level)
{
  level->fFlags = 0;
  level->fId = 0;
}

// Finds the end of a streamed chunk: the mirrored mark, counted in words from the padded end of what was read.
int skipToMark(_FLfile* file, const FLcontext* level)
{
  const Tint64 read = FLposition(file) - level->fChunkStart;
  if (const int error = FLmove(file, level->fChunkStart + FLpadded(std::max<Tint64>(read, 0), level->fChunkMask)))
    return error;
  for (bool marked = false;;)
  {
    if (level->fLimit != kFLnoLimit && level->fLimit - FLposition(file) < 4)
      return FLfail(kFLnoEndMarker);
    const long ahead = FLpeek(file, 4);
    if (ahead < 4)
      return ahead < 0 ? flerrno : FLfail(kFLnoEndMarker);
    const TuInt32 word = FLloadword(file->fCur);
    file->fCur += 4;
    if (marked && word == kFLmarkWord)
      return 0;
    marked = word == kFLeovcMirrored;
  }
}

// Enters the group whose header is pending, at its first chunk.
int enterGroup(_FLfile* file)
{
  const int error = FLmove(file, file->fLevel->fChunkStart + 4);
  return error ? error : FLpush(file);
}

// Goes behind the padding of the group just left, as the enclosing level counts it.
int endGroup(_FLfile* file)
{
  FLcontext* level = file->fLevel;
  const Tint64 size = level->fSize >= 0 ? level->fSize : FLposition(file) - level->fChunkStart;
  Tint64 target = level->fChunkStart + FLpadded(size, level->fChunkMask);
  if (level->fSize < 0)
    target = std::min(target, level->fLimit);
  endChunk(level);
  return FLmove(file, target);
}

// Leaves the levels down to `outer`, each at its end. A loop: files nest as deep as they like.
int leaveGroups(_FLfile* file, const FLcontext* outer)
{
  int status = 0;
  while (status == 0 && file->fLevel != outer)
  {
    FLcontext* level = file->fLevel;
    if (level->fParent->fSize < 0)
    {
      status = FLbgnget(file, nullptr, nullptr);
      if (status == kFLgroupHeader && level->fSize < 0)
      {
        status = enterGroup(file);
        continue;
      }
      if (status == kFLok || status == kFLgroupHeader)
      {
        status = FLendget(file);
        continue;
      }
      if (status != kFLend)
        break;
      const bool markFits = level->fLimit == kFLnoLimit || level->fLimit - FLposition(file) >= 8;
      const long ahead = markFits ? FLpeek(file, 8) : 0;
      if (ahead == 8 && FLloadword(file->fCur) == kFLeovc && FLloadword(file->fCur + 4) == kFLmarkWord)
        file->fCur += 8;
      status = ahead < 0 ? flerrno : 0;
    }
    FLpop(file);
    if (status == 0)
      status = endGroup(file); // of known size: straight to its end
  }
  while (file->fLevel != outer)
    FLpop(file);
  endChunk(file->fLevel);
  return status;
}

// Whether the next header is in the window, and that of a plain chunk of known size inside its group: the usual case,
// whose id and size it gives.
[[gnu::always_inline]] inline bool plainAhead(const _FLfile* file, TuInt32& id, TuInt32& size)
{
  if (file->fEnd - file->fCur < 8 || !file->fReads)
    return false;
  const FLcontext* level = file->fLevel;
  id = FLloadword(file->fCur);
  size = FLloadword(file->fCur + 4);
  return level->fParent && !(level->fFlags & kFLpending) && size <= TuInt32(kFLunbounded - 8) &&
         FLreadposition(file) + 8 + Tint64(size) <= level->fLimit && FLplainAtSight(id);
}

} // namespace

int FLbgnget(_FLfile* file, TuInt32* id, Tint32* size)
{
  TuInt32 chunkId, chunkSize;
  if (file && plainAhead(file, chunkId, chunkSize)) [[likely]]
  {
    FLcontext* level = file->fLevel;
    level->fFlags = kFLpending;
    level->fId = chunkId;
    level->fSize = Tint32(chunkSize);
    level->fChunkMask = level->fMask;
    level->fChunkStart = FLreadposition(file) + 8;
    level->fChunkEnd = level->fChunkStart + Tint64(chunkSize);
    file->fCur += 8;
    report(level, id, size);
    return kFLok;
  }
  return readHeader(file, id, size);
}

long FLget(_FLfile* file, void* buffer, long count)
{
  if (file && (file->fLevel->fFlags & kFLpending) && count >= 0) [[likely]]
  {
    if (count <= file->fEnd - file->fCur && count <= file->fLevel->fChunkEnd - FLreadposition(file)) [[likely]]
    {
      FLcopy(buffer, file->fCur, std::size_t(count));
      file->fCur += count;
      if (!file->fMapping.shrunk()) [[likely]]
        return count;
    }
  }
  return readData(file, buffer, count);
}

int FLendget(_FLfile* file)
{
  if (file && (file->fLevel->fFlags & kFLpending) && file->fLevel->fSize >= 0) [[likely]]
  {
    FLcontext* level = file->fLevel;
    const Tint64 forward = level->fChunkStart + FLpadded(level->fSize, level->fChunkMask) - FLreadposition(file);
    if (forward >= 0 && forward <= file->fEnd - file->fCur && level->fId != kFLgend) [[likely]]
    {
      file->fCur += forward;
      endChunk(level);
      return 0;
    }
  }
  return FLendslow(file);
}

int FLendslow(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  FLcontext* level = file->fLevel;
  if (!(level->fFlags & kFLpending) || level->fId == kFLgend)
    return 0;
  if (const int error = FLbeginreading(file))
    return error;
  if (FLshrank(file))
    return kFLioError;
  int error = 0;
  if (level->fSize >= 0)
    error = FLmove(file, level->fChunkStart + FLpadded(level->fSize, level->fChunkMask));
  else if (level->fFlags & kFLidGroup)
    return FLskipgroup(file);
  else if (level->fSize == FL_SIZE_STREAMED)
    error = skipToMark(file, level);
  else
    error = FLfail(file->fFifo ? kFLbadSize : kFLinUse);
  if (error == 0)
    endChunk(level);
  return error;
}

void* FLbgnread(_FLfile* file, long count)
{
  if (!file)
    return FLfail(kFLbadCall), nullptr;
  FLcontext* level = file->fLevel;
  if (!(level->fFlags & kFLpending) || level->fId == kFLgend)
    return FLfail(kFLnoChunk), nullptr;
  if (FLbeginreading(file) != 0)
    return nullptr;
  if (count < 0)
    return FLfail(kFLbadSize), nullptr;
  const Tint64 position = FLposition(file);
  if (level->fChunkEnd != kFLnoLimit && count > level->fChunkEnd - position)
    return FLfail(kFLpastBlock), nullptr;
  if (file->fInMemory && !file->fPushed)
  {
    if (count > file->fEnd - file->fCur)
      return FLfail(kFLbadSize), nullptr;
    file->fCur += count;
    return const_cast<unsigned char*>(file->fCur - count); // the block is the caller's, who may write to it
  }
  // Where nothing tells how much there is, the buffer grows with what came, not with what was asked for.
  const bool sizeKnown = !file->fFifo && file->fMark != kFLnoMark && count <= file->fMark - position;
  file->fReservedSize = -1; // what lay in the buffer is gone
  Tint64 held = 0;
  unsigned char* buffer = FLreserve(file, 1, 0);
  while (buffer && held < count)
  {
    const Tint64 piece = sizeKnown ? count : std::min<Tint64>(count - held, std::max<Tint64>(held, kFLwindowSize));
    buffer = FLreserve(file, std::size_t(held + piece), std::size_t(held));
    if (!buffer)
      break;
    const Tint64 got = FLtake(file, buffer + held, piece);
    if (got < 0)
      return nullptr;
    held += got;
    if (got < piece)
    {
      if (!file->fFifo && FLmove(file, position) != 0)
        return nullptr;
      return FLfail(kFLbadSize), nullptr;
    }
  }
  return buffer;
}

void* FLgetchunk(_FLfile* file, TuInt32* id, Tint32* size)
{
  if (!file)
    return FLfail(kFLbadCall), nullptr;
  FLcontext* level = file->fLevel;
  TuInt32 chunkId, length;
  if (plainAhead(file, chunkId, length)) [[likely]]
  {
    const Tint64 whole = 8 + FLpadded(length, level->fMask);
    const bool inPlace = file->fInMemory && !file->fPushed;
    unsigned char* data = nullptr;
    if (whole <= file->fEnd - file->fCur && !file->fMapping.shrunk()) [[likely]]
    {
      if (id)
        *id = chunkId;
      if (size)
        *size = Tint32(length);
      // A block is its caller's, who may write to it.
      data = inPlace ? const_cast<unsigned char*>(file->fCur + 8) : FLreserve(file, length, 0);
      if (data && !inPlace)
        FLcopy(data, file->fCur + 8, length);
      if (data)
        file->fCur += whole;
      file->fReservedSize = -1; // what lay in the buffer is gone
      return data;
    }
  }
  if (!level->fParent)
    return FLfail(kFLnoGroup), nullptr;
  if (const int status = FLbgnget(file, id, size))
    return FLfail(status), nullptr;
  if (level->fSize < 0)
    return FLfail(kFLbadSize), nullptr;
  void* data = FLbgnread(file, level->fSize);
  return data && FLendget(file) == 0 ? data : nullptr;
}

int FLbgnreadgroup(_FLfile* file, TuInt32* type, Tint32* size)
{
  const int status = FLbgnget(file, nullptr, size);
  if (status != kFLgroupHeader)
    return status == kFLok ? kFLchunkHeader : status;
  if (type)
    *type = file->fLevel->fType;
  return enterGroup(file);
}

int FLendrgroup(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (!file->fReads)
    return FLfail(kFLbadMode);
  if (!file->fLevel->fParent)
    return FLfail(kFLnoGroup);
  if (const int error = FLbeginreading(file))
    return error;
  return leaveGroups(file, file->fLevel->fParent);
}

int FLskipgroup(_FLfile* file)
{
  const int status = FLbgnreadgroup(file, nullptr, nullptr);
  return status == 0 ? FLendrgroup(file) : status;
}
