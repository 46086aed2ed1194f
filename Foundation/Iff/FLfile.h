/// \file
/// The record of one open chunk file and its nesting levels. Internal to the engine.
///
/// All bytes pass through a window: the part of the source that is in memory. For a memory file it is the whole block,
/// else a buffer. While reading, fCur to fEnd is what can be taken without asking the system and fEndPos is the file's
/// position at fEnd, so that only fCur moves per chunk and the position follows from it:
///
///     window   [ consumed | fCur … unread … | fEnd ]        position = fEndPos - (fEnd - fCur)
///
/// While writing, fOut to fOutEnd is the room left in the window, with fEndPos the position at fOutEnd; fCur and fEnd
/// are null then, so that the short paths of reading fail by themselves. Bytes put back become a window of their own;
/// the one they interrupt waits in fWaiting.

#pragma once

#include "Foundation/Iff/FL.h"
#include "Foundation/Platform/MappedFile.h"
#include "Foundation/Platform/Process.h"

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>

/// What stands in flags of a level beside the kFLid bits of its current chunk.
enum : unsigned
{
  kFLpending = 0x10000, // reading: the header was read, the chunk is not ended
  kFLopen = 0x20000     // writing: the chunk is begun, not ended
};

/// One nesting level. The chunk is the one at hand at this level: for an enclosing level the group that was entered.
struct FLcontext
{
  FLcontext* fParent;       // null for the root; in the list of spare levels the next
  Tint64 fStart;            // position of the level's data: of a group just behind the type id
  Tint64 fLimit;            // position where the level ends; kFLnoLimit when nothing tells
  Tint64 fChunkStart;       // position of the chunk's data
  Tint64 fChunkEnd;         // where its data end; the level's end while the size is unknown
  unsigned fFlags;          // of the chunk; 0 when there is none
  TuInt32 fId;              // of the chunk
  Tint32 fSize;             // of the chunk, or a mark
  TuInt32 fType;            // of the chunk when it is a group
  unsigned char fMask;      // alignment - 1 of the level
  unsigned char fChunkMask; // alignment - 1 of the chunk
};

constexpr Tint64 kFLnoLimit = LLONG_MAX;
constexpr Tint64 kFLlastPosition = LLONG_MAX / 2; // that a step may reach: what lies behind it can be computed with
constexpr Tint64 kFLunbounded = 0x7FFFFFF0;       // room for a chunk where nothing else limits it
constexpr Tint64 kFLnoMark = -16;                 // high-water mark of a file of unknown size
constexpr std::size_t kFLwindowSize = 65536;

constexpr TuInt32 kFLgend = 0x47454E44;         // "GEND"
constexpr TuInt32 kFLpath = 0x50415448;         // "PATH"
constexpr TuInt32 kFLincl = 0x494E434C;         // "INCL"
constexpr TuInt32 kFLeovc = 0x454F5643;         // "EOVC": ends a streamed chunk
constexpr TuInt32 kFLeovcMirrored = 0x43564F45; // "CVOE": what readers of plain chunks look for
constexpr TuInt32 kFLmarkWord = 0x80000000;     // the size word behind both

/// Where bytes come from or go to when they are not in memory.
struct FLtransport
{
  int fDescriptor = -1;
  std::FILE* fStream = nullptr; // standard input: read through it, so that what others read of it is not lost
  bool fBorrowed = false;       // never closed
  Tint64 fOrigin = 0;           // offset that is position 0
  int fModeBefore = 0;          // translation mode of a borrowed descriptor

  bool isOpen() const { return fDescriptor >= 0; }
};

/// A child at the end of a pipe, and the code that stands for its failure.
struct FLfilter
{
  Platform::Process fProcess = 0;
  int fFailure = 0;
};

struct _FLfile // NOLINT: the name is the interface's
{
  // What every chunk needs
  const unsigned char* fCur = nullptr;
  const unsigned char* fEnd = nullptr;
  Tint64 fEndPos = 0;
  FLcontext* fLevel = &fRoot;
  unsigned char* fOut = nullptr;
  unsigned char* fOutEnd = nullptr;
  FLcontext fRoot = {};

  _FLfile* fNext = nullptr;    // in the list of open files
  char* fName = nullptr;       // as given
  const char* fPath = nullptr; // in fName, when it was opened by a path

  bool fReads = false;   // opened for reading
  bool fWrites = false;  // opened for writing
  bool fBoth = false;    // raw transfers go both ways
  bool fWriting = false; // the last transfer was a write
  bool fFifo = false;
  bool fLegacy = false;    // look for the true sizes of old chunks
  bool fTemporary = false; // removed by FLclose
  bool fSawEnd = false;    // the source reported its end
  int fFailure = 0;        // why the first write failed: from then on the file is not what it should be

  Tint64 fMark = kFLnoMark; // largest position known to exist, or kFLnoMark

  bool fInMemory = false;
  unsigned char* fBlock = nullptr; // of a memory file
  std::size_t fBlockSize = 0;
  Platform::MappedFile fMapping; // of a mapped one

  FLtransport fTransport;
  FLtransport fSecond; // a spooled file's output
  FLfilter fFilters[2];

  unsigned char* fWindow = nullptr;  // the buffer of kFLwindowSize bytes, unless a memory file
  std::size_t fFill = kFLwindowSize; // how much to ask for next

  unsigned char* fPushed = nullptr; // bytes put back; the window while not null
  struct
  {
    const unsigned char* fCur;
    const unsigned char* fEnd;
    Tint64 fEndPos;
  } fWaiting = {};

  unsigned char* fTransfer = nullptr; // for FLbgnread and FLbgnwrite
  std::size_t fTransferSize = 0;
  unsigned char* fReserved = nullptr; // what FLbgnwrite gave out, in fTransfer or in the block
  long fReservedSize = -1;            // what it was asked for; -1: nothing
  bool fBuffered = false;             // it is a chunk of FLbgnbufchunk
  unsigned char fBufferedMask = 0;    // of that chunk

  FLcontext* fSpare = nullptr; // levels to be used again
};

/// Notes \p code as the last failure and returns it.
inline int FLfail(int code)
{
  flerrno = code;
  return code;
}

/// Whether an id can be told to be a plain chunk by its first character alone. That of no special id is: F, C, L, P, G
/// and I, nor S of the old chunks, nor zero, because a mapped file that shrank reads as zeros.
inline bool FLplainAtSight(TuInt32 id)
{
  constexpr auto bit = [](char c) { return 1U << (c - '@'); };
  static constexpr TuInt32 kCare[8] = {1, 0,
                                       bit('F') | bit('C') | bit('L') | bit('P') | bit('G') | bit('I') | bit('S')};
  return !(kCare[id >> 29] >> (id >> 24 & 31U) & 1U);
}

/// memcpy for data that are mostly short: 8 to 32 bytes are copied in line, as two halves that may overlap.
inline void FLcopy(void* to, const void* from, std::size_t count)
{
  if (count < 8 || count > 32)
  {
    if (count != 0)
      std::memcpy(to, from, count);
    return;
  }
  unsigned char halves[32];
  const unsigned char* source = static_cast<const unsigned char*>(from);
  unsigned char* target = static_cast<unsigned char*>(to);
  if (count <= 16)
  {
    std::memcpy(halves, source, 8);
    std::memcpy(halves + 16, source + count - 8, 8);
    std::memcpy(target, halves, 8);
    std::memcpy(target + count - 8, halves + 16, 8);
  }
  else
  {
    std::memcpy(halves, source, 16);
    std::memcpy(halves + 16, source + count - 16, 16);
    std::memcpy(target, halves, 16);
    std::memcpy(target + count - 16, halves + 16, 16);
  }
}

inline TuInt32 FLloadword(const unsigned char* at)
{
  return TuInt32(at[0]) << 24 | TuInt32(at[1]) << 16 | TuInt32(at[2]) << 8 | TuInt32(at[3]);
}

inline void FLstoreword(unsigned char* at, TuInt32 word)
{
  at[0] = static_cast<unsigned char>(word >> 24);
  at[1] = static_cast<unsigned char>(word >> 16);
  at[2] = static_cast<unsigned char>(word >> 8);
  at[3] = static_cast<unsigned char>(word);
}

/// The position while reading, while writing, and in any case.
inline Tint64 FLreadposition(const _FLfile* file)
{
  return file->fEndPos - (file->fEnd - file->fCur);
}
inline Tint64 FLwriteposition(const _FLfile* file)
{
  return file->fEndPos - (file->fOutEnd - file->fOut);
}
inline Tint64 FLposition(const _FLfile* file)
{
  return file->fWriting ? FLwriteposition(file) : FLreadposition(file);
}

/// \p size rounded up to the alignment that \p mask stands for.
inline Tint64 FLpadded(Tint64 size, unsigned mask)
{
  return (size + Tint64(mask)) & ~Tint64(mask);
}

/// Makes the bytes of the window contiguous from fCur on until \p count of them are there or the file ends, without
/// consuming them; returns how many there are, at most \p count, or -1 with flerrno. \p count is at most kFLpeekMost.
constexpr long kFLpeekMost = 8192;
long FLpeekslow(_FLfile* file, long count);
inline long FLpeek(_FLfile* file, long count)
{
  return file->fEnd - file->fCur >= count ? count : FLpeekslow(file, count);
}

/// Reads \p count bytes; fewer at the end of the file. -1 with flerrno when the system fails, with what came consumed.
Tint64 FLtake(_FLfile* file, void* buffer, Tint64 count);

/// Writes all of \p count bytes; none when a memory block has no room for all. 0 or the error.
int FLemit(_FLfile* file, const void* bytes, std::size_t count);
int FLemitzeros(_FLfile* file, Tint64 count);

/// Notes that a write failed, and returns why: kFLioError or kFLbrokenPipe, by errno.
int FLfailedWrite(_FLfile* file);

/// Whether a mapped file lost bytes that were read; then notes the failure.
bool FLshrank(const _FLfile* file);

/// Moves to the absolute position \p target, as FLseek says.
int FLmove(_FLfile* file, Tint64 target);

/// Overwrites the word at \p position, behind the present one; the position stays.
int FLpatch(_FLfile* file, Tint64 position, TuInt32 word);

/// Hands the window's bytes to the system.
int FLdrain(_FLfile* file);

/// Make the window one for reading or for writing; kFLbadMode, kFLfifo, kFLnoMemory or kFLioError when it can't be.
int FLswitchtoreading(_FLfile* file);
int FLswitchtowriting(_FLfile* file);
inline int FLbeginreading(_FLfile* file)
{
  return file->fReads && !file->fWriting ? 0 : FLswitchtoreading(file);
}
inline int FLbeginwriting(_FLfile* file)
{
  return file->fWriting ? 0 : FLswitchtowriting(file);
}

/// Room for \p count bytes in the transfer buffer, keeping the first \p keep of them. Null with kFLnoMemory.
unsigned char* FLgrow(_FLfile* file, std::size_t count, std::size_t keep);
inline unsigned char* FLreserve(_FLfile* file, std::size_t count, std::size_t keep)
{
  return file->fTransfer && count <= file->fTransferSize ? file->fTransfer : FLgrow(file, count, keep);
}

/// The raw source and target: some bytes, 0 at the end, -1 with flerrno; all bytes, or false with flerrno and in
/// \p count how many it were.
std::ptrdiff_t FLreceive(_FLfile* file, void* buffer, std::size_t count);
bool FLsend(_FLfile* file, FLtransport& transport, const void* bytes, std::size_t& count);
bool FLcloseTransport(FLtransport& transport);

/// Checks what a header may be here: 0 and the id's flags, or the error.
int FLclassify(const FLcontext* level, TuInt32 id, unsigned& flags);

/// The same for a header that is to be written. FLmaybegin makes all checks of beginning a chunk of at least \p size
/// bytes, or with \p type a group: 0 and the flags, or the error.
int FLmaywrite(const FLcontext* level, TuInt32 id, unsigned& flags);
int FLmaybegin(_FLfile* file, TuInt32 id, Tint32 size, const TuInt32* type, unsigned& flags);

/// The alignment - 1 of a chunk with these flags: its own where it is a group, at least the level's.
inline unsigned char FLmaskof(const FLcontext* level, unsigned flags)
{
  const unsigned own = flags & kFLidGroup ? (flags & kFLidAlign) - 1 : 0;
  return static_cast<unsigned char>(own > level->fMask ? own : level->fMask);
}

/// Enters a level below the present one and leaves it again, without reading or writing. FLenter makes it that of the
/// group at hand in the level around it, which FLpush does by itself where that is known already.
int FLpush(_FLfile* file);
void FLenter(const FLcontext* around, FLcontext* level);
void FLpop(_FLfile* file);

/// Ends reading's chunk at hand where the short path of FLendget does not reach.
int FLendslow(_FLfile* file);

/// Closes every open file.
void FLcloseall();
