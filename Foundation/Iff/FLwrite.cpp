// Writing: chunks, groups, buffered chunks.

#include "Foundation/Iff/FLfile.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr Tint64 kLargestSize = 0x7FFFFFFF;

int emitHeader(_FLfile* file, TuInt32 id, TuInt32 size)
{
  unsigned char header[8];
  FLstoreword(header, id);
  FLstoreword(header + 4, size);
  return FLemit(file, header, sizeof header);
}

// Whether a chunk with this many bytes of data fits into what is left of the group.
bool fits(const _FLfile* file, Tint64 size)
{
  const FLcontext* level = file->fLevel;
  return level->fLimit == kFLnoLimit || size + 8 <= level->fLimit - FLposition(file);
}

// Begins a chunk, or with `type` a group that is entered. The header is written at once, or nothing is.
int begin(_FLfile* file, TuInt32 id, Tint32 size, const TuInt32* type)
{
  unsigned flags = 0;
  if (const int error = FLmaybegin(file, id, type && size < 0 ? 4 : size, type, flags))
    return error;
  if (size < 0)
    size = file->fFifo ? FL_SIZE_STREAMED : FL_SIZE_PATCHED;
  FLcontext* level = file->fLevel;
  if (type)
  {
    if (const int error = FLpush(file))
      return error;
  }
  unsigned char header[12];
  FLstoreword(header, id);
  FLstoreword(header + 4, TuInt32(size));
  FLstoreword(header + 8, type ? *type : 0);
  if (const int error = FLemit(file, header, type ? 12 : 8))
  {
    if (type)
      FLpop(file);
    return error;
  }
  file->fReservedSize = -1;
  level->fFlags = flags | kFLopen;
  level->fId = id;
  level->fSize = size;
  level->fType = type ? *type : 0;
  level->fChunkStart = FLposition(file) - (type ? 4 : 0);
  level->fChunkEnd = size >= 0 ? level->fChunkStart + size : level->fLimit;
  level->fChunkMask = FLmaskof(level, flags);
  if (type)
    FLenter(level, file->fLevel);
  return 0;
}

} // namespace

int FLmaywrite(const FLcontext* level, TuInt32 id, unsigned& flags)
{
  const int error = FLclassify(level, id, flags);
  return error == 0 && id == kFLgend ? kFLreservedId : error; // "GEND" is the engine's own
}

int FLmaybegin(_FLfile* file, TuInt32 id, Tint32 size, const TuInt32* type, unsigned& flags)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (!file->fWrites)
    return FLfail(kFLbadMode);
  if (file->fLevel->fFlags & kFLopen)
    return FLfail(kFLnestedWrite);
  if (const int error = FLmaywrite(file->fLevel, id, flags))
    return FLfail(error);
  if (type && (!(flags & kFLidGroup) || (*type & 0x80000000U)))
    return FLfail(kFLbadId);
  if (!fits(file, std::max<Tint32>(size, 0)))
    return FLfail(kFLpastBlock);
  return FLbeginwriting(file);
}

int FLbgnputchunk(_FLfile* file, TuInt32 id, Tint32 size)
{
  // The usual case: a plain chunk of known size in a group, with room for its header in the window.
  if (file && file->fOutEnd - file->fOut >= 8 && size >= 0 && FLplainAtSight(id)) [[likely]]
  {
    FLcontext* level = file->fLevel;
    const Tint64 start = FLwriteposition(file) + 8;
    if (file->fWrites && level->fParent && !(level->fFlags & kFLopen) && size <= level->fLimit - start) [[likely]]
    {
      FLstoreword(file->fOut, id);
      FLstoreword(file->fOut + 4, TuInt32(size));
      file->fOut += 8;
      file->fReservedSize = -1;
      level->fFlags = kFLopen;
      level->fId = id;
      level->fSize = size;
      level->fType = 0;
      level->fChunkStart = start;
      level->fChunkEnd = start + size;
      level->fChunkMask = level->fMask;
      return 0;
    }
  }
  return begin(file, id, size, nullptr);
}

long FLput(_FLfile* file, const void* bytes, long count)
{
  if (!file)
    return FLfail(kFLbadCall), 0;
  const FLcontext* level = file->fLevel;
  if ((level->fFlags & kFLopen) && count > 0 && count <= file->fOutEnd - file->fOut &&
      count <= level->fChunkEnd - FLwriteposition(file)) [[likely]]
  {
    FLcopy(file->fOut, bytes, std::size_t(count));
    file->fOut += count;
    return count;
  }
  if (!(level->fFlags & kFLopen))
    return FLfail(kFLnoChunk), 0;
  if (count < 0)
    return FLfail(kFLbadSize), 0;
  if (FLbeginwriting(file) != 0)
    return 0;
  if (count > level->fChunkEnd - FLposition(file))
    return FLfail(kFLpastBlock), 0;
  return FLemit(file, bytes, std::size_t(count)) == 0 ? count : 0;
}

long FLputs(_FLfile* file, const char* text)
{
  return text ? FLput(file, text, long(std::strlen(text)) + 1) : (FLfail(kFLbadCall), 0);
}

long FLputchar(_FLfile* file, int c)
{
  const unsigned char byte = static_cast<unsigned char>(c);
  return FLput(file, &byte, 1);
}

int FLendputchunk(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  FLcontext* level = file->fLevel;
  if (!(level->fFlags & kFLopen))
    return FLendget(file);
  const unsigned flags = level->fFlags;
  level->fFlags = 0;
  level->fId = 0;
  const Tint64 missing = FLpadded(level->fSize, level->fChunkMask) - level->fSize;
  if (level->fSize >= 0 && file->fOutEnd - file->fOut >= missing && file->fWriting &&
      FLwriteposition(file) == level->fChunkStart + level->fSize) [[likely]]
  {
    for (Tint64 i = 0; i < missing; ++i)
      *file->fOut++ = 0;
    return 0;
  }
  if (const int error = FLbeginwriting(file))
    return error;
  const Tint64 count = FLposition(file) - level->fChunkStart;
  if (level->fSize >= 0)
  {
    if (count != level->fSize)
      return FLfail(kFLbadSize);
    return FLemitzeros(file, FLpadded(count, level->fChunkMask) - count);
  }
  if (count < 0 || (level->fSize == FL_SIZE_PATCHED && count > kLargestSize))
    return FLfail(kFLbadSize);
  const unsigned mask = std::max<unsigned>(level->fChunkMask, 3);
  if (const int error = FLemitzeros(file, FLpadded(count, mask) - count))
    return error;
  if (level->fSize == FL_SIZE_PATCHED)
    return FLpatch(file, level->fChunkStart - 4, TuInt32(count));
  return flags & kFLidReserved ? 0 : emitHeader(file, kFLeovc, kFLmarkWord);
}

int FLbgnwritegroup(_FLfile* file, TuInt32 group, TuInt32 type)
{
  return begin(file, group, FL_SIZE_UNKNOWN, &type);
}

int FLbgnwritegroupsize(_FLfile* file, TuInt32 group, TuInt32 type, Tint32 size)
{
  return size < 4 ? FLfail(kFLbadSize) : begin(file, group, size, &type);
}

int FLendwritegroup(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (file->fReads)
    return FLendrgroup(file);
  const FLcontext* level = file->fLevel;
  if (!level->fParent)
    return FLfail(kFLnoGroup);
  if ((level->fFlags & kFLopen) || (file->fReservedSize >= 0 && file->fBuffered))
    return FLfail(kFLnestedWrite);
  int error = 0;
  if (level->fParent->fSize == FL_SIZE_STREAMED)
    error = emitHeader(file, kFLgend, 0);
  FLpop(file);
  const int endError = FLendputchunk(file);
  return error ? error : endError;
}

void* FLbgnwrite(_FLfile* file, long count)
{
  if (!file)
    return FLfail(kFLbadCall), nullptr;
  if (FLbeginwriting(file) != 0)
    return nullptr;
  file->fReservedSize = -1;
  if (count < 0 || count > LONG_MAX - 8)
    return FLfail(kFLbadSize), nullptr;
  if (file->fInMemory)
  {
    if (count > file->fOutEnd - file->fOut)
      return FLfail(kFLbadSize), nullptr;
    file->fReserved = file->fOut;
  }
  else
  {
    file->fReserved = FLreserve(file, std::size_t(count) + 8, 0);
    if (!file->fReserved)
      return nullptr;
  }
  file->fReservedSize = count;
  file->fBuffered = false;
  return file->fReserved;
}

int FLendwrite(_FLfile* file, long count)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (file->fReservedSize < 0 || file->fBuffered)
    return FLfail(kFLbadCall);
  if (count == 0)
    count = file->fReservedSize;
  if (count < 0 || count > file->fReservedSize + 8)
    return FLfail(kFLbadSize);
  if (const int error = FLbeginwriting(file))
    return error;
  if (file->fInMemory && count > file->fOutEnd - file->fReserved)
    return FLfail(kFLbadSize);
  file->fReservedSize = -1;
  if (!file->fInMemory)
    return FLemit(file, file->fReserved, std::size_t(count));
  file->fOut = file->fReserved + count; // the bytes are in their place
  return 0;
}

void* FLbgnbufchunk(_FLfile* file, TuInt32 id, Tint32 size)
{
  unsigned flags = 0;
  if (file && size < 0 && !(file->fLevel->fFlags & kFLopen))
    return FLfail(kFLbadSize), nullptr;
  if (FLmaybegin(file, id, size, nullptr, flags) != 0)
    return nullptr;
  const FLcontext* level = file->fLevel;
  if (!level->fParent)
    return FLfail(kFLbadRoot), nullptr;
  const unsigned char mask = FLmaskof(level, flags);
  const Tint64 padded = FLpadded(size, mask);
  if (!fits(file, padded))
    return FLfail(kFLpastBlock), nullptr;
  if (file->fInMemory && padded + 8 > file->fOutEnd - file->fOut)
    return FLfail(kFLbadSize), nullptr;
  unsigned char* buffer = static_cast<unsigned char*>(FLbgnwrite(file, size));
  if (!buffer)
    return nullptr;
  FLstoreword(buffer, id);
  file->fBuffered = true;
  file->fBufferedMask = mask;
  return buffer + 8;
}

int FLendbufchunk(_FLfile* file, Tint32 actual)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (file->fReservedSize < 0 || !file->fBuffered)
    return FLfail(kFLnoChunk);
  if (actual > file->fReservedSize)
    return FLfail(kFLbadSize);
  if (actual == 0)
    actual = Tint32(file->fReservedSize);
  file->fReservedSize = -1;
  if (actual < 0)
    return 0;
  FLstoreword(file->fReserved + 4, TuInt32(actual));
  const std::size_t whole = std::size_t(actual) + 8;
  if (const int error = FLbeginwriting(file))
    return error;
  if (file->fInMemory)
    file->fOut = file->fReserved + whole;
  else if (const int error = FLemit(file, file->fReserved, whole))
    return error;
  return FLemitzeros(file, FLpadded(actual, file->fBufferedMask) - actual);
}

int FLputtypedchunk(_FLfile* file, TuInt32 id, Tint32 size, const void* data, TuInt32 type)
{
  if (size < 4)
    return FLfail(file ? kFLbadSize : kFLbadCall);
  if (const int error = FLbgnputchunk(file, id, size))
    return error;
  const bool put = FLput(file, &type, 4) == 4 && FLput(file, data, size - 4) == size - 4;
  const int failure = flerrno;
  const int error = FLendputchunk(file);
  return put ? error : FLfail(failure);
}
