#include "Foundation/Iff/TiffFile.h"

#include "Foundation/Iff/FLfile.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kStopped = 47;          // the answer that stops a walk without an error
constexpr long kMostBuffered = 65536; // bytes
constexpr long kLeastGrowth = 1024;

struct ChunkBuffer
{
  TiffTag fTag;
  unsigned char* fData;
  long fUsed;
  long fCapacity;
};

// What is buffered, in the whole process.
struct
{
  _FLfile* fOwner = nullptr; // of the group or the chunks; null when there are none
  bool fInGroup = false;
  TiffTag fGroup, fType;
  int fFailure = 0;               // 0, or why they will not be written
  ChunkBuffer* fChunks = nullptr; // fDepth + 1 of them are in use; they all keep their memory
  long fDepth = -1;
  long fAllocated = 0;
  long fTotal = 0; // bytes
} gBuffering;

bool pushChunk(TiffTag tag)
{
  const long index = gBuffering.fDepth + 1;
  if (index == gBuffering.fAllocated)
  {
    const std::size_t length = std::size_t(std::max(2 * index, 16L));
    void* grown = length <= SIZE_MAX / sizeof(ChunkBuffer)
                    ? std::realloc(gBuffering.fChunks, length * sizeof(ChunkBuffer))
                    : nullptr;
    if (!grown)
      return false;
    gBuffering.fChunks = static_cast<ChunkBuffer*>(grown);
    std::fill(gBuffering.fChunks + index, gBuffering.fChunks + length, ChunkBuffer{});
    gBuffering.fAllocated = long(length);
  }
  gBuffering.fChunks[index].fTag = tag;
  gBuffering.fDepth = index;
  return true;
}

void popChunk()
{
  ChunkBuffer& chunk = gBuffering.fChunks[gBuffering.fDepth--];
  gBuffering.fTotal -= chunk.fUsed;
  chunk.fUsed = 0;
}

void releaseBuffers()
{
  while (gBuffering.fDepth >= 0)
    popChunk();
  gBuffering.fOwner = nullptr;
  gBuffering.fInGroup = false;
  gBuffering.fFailure = 0;
}

// The size of the buffered group, every chunk padded to 4; -1 where that is not what the alignment in force makes of
// it.
Tint32 groupSize()
{
  FLcontext level{};
  level.fMask = FLmaskof(gBuffering.fOwner->fLevel, FLidflags(gBuffering.fGroup.value()));
  Tint64 counted = 4, actual = 4;
  for (long i = 0; i <= gBuffering.fDepth; ++i)
  {
    const ChunkBuffer& chunk = gBuffering.fChunks[i];
    counted += 8 + FLpadded(chunk.fUsed, 3);
    actual += 8 + FLpadded(chunk.fUsed, FLmaskof(&level, FLidflags(chunk.fTag.value())));
  }
  return counted == actual && counted <= INT_MAX ? Tint32(counted) : -1;
}

void* behindType(void* chunk, Tint32 whole, Tint32* size, TuInt32* type)
{
  if (!chunk)
    return nullptr;
  if (whole < 4)
    return FLfail(kFLbadSize), nullptr;
  if (size)
    *size = whole - 4;
  if (type)
    std::memcpy(type, chunk, 4);
  return static_cast<unsigned char*>(chunk) + 4;
}

} // namespace

bool TiffFile::fsNeedToBufferData = false;

TiffFile& TiffFile::operator=(TiffFile&& other) noexcept
{
  std::swap(fFile, other.fFile);
  std::swap(fFormCallback, other.fFormCallback);
  std::swap(fListCallback, other.fListCallback);
  std::swap(fLeafCallback, other.fLeafCallback);
  std::swap(fReceiver, other.fReceiver);
  return *this;
}

TiffFile::~TiffFile()
{
  if (fFile)
    close();
}

bool TiffFile::open(const char* name, const char* mode)
{
  if (fFile)
    return FLfail(kFLinUse), false;
  fFile = FLopen(name, mode);
  return fFile;
}

bool TiffFile::reopen(const char* name, const char* mode)
{
  return (!fFile || close() == 0) && open(name, mode);
}

int TiffFile::initInheritance(_FLfile* file)
{
  const int status = fFile && fFile != file ? close() : 0;
  fFile = file;
  return status;
}

int TiffFile::close()
{
  int failure = 0;
  while (isBuffering())
  {
    const int status = gBuffering.fInGroup ? endWriteGroup() : endPut();
    failure = failure ? failure : status;
  }
  const int status = FLclose(std::exchange(fFile, nullptr));
  return failure ? (FLfail(failure), -1) : status;
}

int TiffFile::quickClose()
{
  if (isBuffering())
  {
    fsNeedToBufferData = false;
    releaseBuffers();
  }
  if (fFile)
    fFile->fWrites = false;
  return FLclose(std::exchange(fFile, nullptr));
}

int TiffFile::beginGet(TiffTag& id, Tint32* size)
{
  TuInt32 value = id.value();
  const int status = FLbgnget(fFile, &value, size);
  id.setValue(value);
  return status;
}

long TiffFile::getString(char* buffer, long length)
{
  if (length < 1)
    return FLfail(kFLbadSize), 0;
  Tint64 taken = 0;
  for (char c = 1; c != 0 && FLget(fFile, &c, 1) == 1; ++taken)
  {
    if (taken < length - 1)
      buffer[taken] = c;
  }
  buffer[std::min<Tint64>(taken, length - 1)] = 0;
  return long(std::min<Tint64>(taken, LONG_MAX));
}

void* TiffFile::getChunk(TiffTag& id, Tint32* size)
{
  TuInt32 value = id.value();
  void* data = FLgetchunk(fFile, &value, size);
  id.setValue(value);
  return data;
}

void* TiffFile::readChunk(Tint32* size)
{
  if (fFile && !(fFile->fLevel->fFlags & kFLpending))
    return FLfail(kFLnoChunk), nullptr;
  return FLgetchunk(fFile, nullptr, size);
}

void* TiffFile::getTypedChunk(TiffTag& id, Tint32* size, TuInt32* type)
{
  Tint32 whole = 0;
  void* chunk = getChunk(id, &whole);
  return behindType(chunk, whole, size, type);
}

void* TiffFile::readTypedChunk(Tint32* size, TuInt32* type)
{
  Tint32 whole = 0;
  void* chunk = readChunk(&whole);
  return behindType(chunk, whole, size, type);
}

int TiffFile::beginReadGroup(TiffTag& type, Tint32* size)
{
  TuInt32 value = type.value();
  const int status = FLbgnreadgroup(fFile, &value, size);
  type.setValue(value);
  return status;
}

int TiffFile::parse()
{
  const int status = parseKernel();
  return status == kFLend ? 0 : status;
}

inline int TiffFile::leafEvent(TiffTag id, Tint32 size)
{
  if (fReceiver)
    return fReceiver->iffLeafMethod(*this, id, size);
  return fLeafCallback ? fLeafCallback(*this, id, size) : 0;
}

int TiffFile::groupEvent(TiffTag group, TiffTag type)
{
  const bool isForm = FLidflags(group.value()) & (kFLidForm | kFLidProp);
  if (fReceiver)
    return isForm ? fReceiver->iffFormMethod(*this, group, type) : fReceiver->iffListMethod(*this, group, type);
  const GroupCallback callback = isForm ? fFormCallback : fListCallback;
  return callback ? callback(*this, group, type) : 0;
}

// kFLend when the level ended or was ended by an answer of 1, else the answer or the code that stopped it. The levels
// that were entered are counted, not recursed into: files nest as deep as they like. A callback may have closed the
// file; the engine's functions then fail.
int TiffFile::parseKernel()
{
  TuInt32 id = 0, type = 0;
  Tint32 size = 0;
  for (Tint64 depth = 0;;)
  {
    int status = fFile ? FLbgnget(fFile, &id, &size) : FLfail(kFLbadCall);
    if (status == kFLok)
    {
      status = leafEvent(id, size);
      if (status == 0)
        status = FLendget(fFile);
      if (status == 0) [[likely]]
        continue;
    }
    else if (status == kFLend)
      leafEvent(TiffTag::kGEND, 0);
    else if (status == kFLgroupHeader)
    {
      status = FLbgnreadgroup(fFile, &type, nullptr);
      const FLcontext* const group = fFile->fLevel;
      if (status == 0 && (status = groupEvent(id, type)) == 0)
      {
        ++depth;
        continue;
      }
      // With the level the group ends, unless it was left already.
      if (status == kFLend && depth > 0 && fFile && fFile->fLevel == group)
      {
        if (const int error = FLendrgroup(fFile))
          status = error;
      }
    }
    else if (status == kFLincomplete && !fFile->fLevel->fParent)
    {
      flerrno = 0;
      status = kFLend;
    }
    if (status == kFLend && depth > 0)
    {
      --depth;
      status = FLendrgroup(fFile);
      if (status == 0)
        continue;
    }
    if (status != kFLend && status != kStopped)
      flerrno = status;
    return status;
  }
}

void TiffFile::freeBuffers() noexcept
{
  if (gBuffering.fOwner)
    return;
  for (long i = 0; i < gBuffering.fAllocated; ++i)
    std::free(gBuffering.fChunks[i].fData);
  std::free(gBuffering.fChunks);
  gBuffering.fChunks = nullptr;
  gBuffering.fAllocated = 0;
}

int TiffFile::beginWriteGroup(TiffTag group, TiffTag type)
{
  if (!isBuffering() && !fsNeedToBufferData)
    return FLbgnwritegroup(fFile, group.value(), type.value());
  if (gBuffering.fOwner)
    return FLfail(isBuffering() && gBuffering.fFailure ? gBuffering.fFailure : int(kFLnestedWrite));
  unsigned flags = 0;
  const TuInt32 typeValue = type.value();
  if (const int error = FLmaybegin(fFile, group.value(), 4, &typeValue, flags))
    return error;
  gBuffering.fOwner = fFile;
  gBuffering.fInGroup = true;
  gBuffering.fGroup = group;
  gBuffering.fType = type;
  return 0;
}

int TiffFile::endWriteGroup()
{
  if (!isBuffering())
    return FLendwritegroup(fFile);
  const int failure = gBuffering.fFailure;
  if (!gBuffering.fInGroup)
    return FLfail(failure ? failure : int(kFLnestedWrite));
  if (failure == 0)
    return flushBuffers(false);
  releaseBuffers();
  return FLfail(failure);
}

int TiffFile::beginPut(TiffTag id, Tint32 size)
{
  unsigned flags = 0;
  int error = 0;
  if (isBuffering())
  {
    // In a group that the engine does not know yet, it is asked what it would say there.
    FLcontext group{}, level{};
    group.fFlags = FLidflags(gBuffering.fGroup.value());
    level.fParent = &group;
    error = gBuffering.fFailure ? gBuffering.fFailure
                                : FLmaywrite(gBuffering.fInGroup ? &level : fFile->fLevel, id.value(), flags);
  }
  else if (fFile && fsNeedToBufferData && !gBuffering.fOwner)
    error = FLmaybegin(fFile, id.value(), 0, nullptr, flags);
  else
    return FLbgnputchunk(fFile, id.value(), size);
  if (error != 0)
    return FLfail(error);
  if (!pushChunk(id))
  {
    if (isBuffering())
      failBuffering(kFLnoMemory);
    return FLfail(kFLnoMemory);
  }
  gBuffering.fOwner = fFile;
  return 0;
}

long TiffFile::put(const void* data, long count)
{
  return isBuffering() ? copyToBuffer(data, count) : FLput(fFile, data, count);
}

long TiffFile::putString(const char* text)
{
  return text ? put(text, long(std::strlen(text)) + 1) : (FLfail(kFLbadCall), 0);
}

long TiffFile::putString(const char* text, long count)
{
  return put(text, count) == count ? count + put("", 1) : 0;
}

int TiffFile::endPut()
{
  if (!isBuffering())
    return FLendputchunk(fFile);
  int error = gBuffering.fFailure;
  if (!gBuffering.fInGroup)
  {
    if (error == 0)
      error = flushBuffer(gBuffering.fDepth, false);
    popChunk();
    if (gBuffering.fDepth < 0)
      releaseBuffers();
    if (error != 0)
      fsNeedToBufferData = false;
  }
  return error ? FLfail(error) : 0;
}

int TiffFile::putWhole(TiffTag id, const TuInt32* type, Tint32 size, const void* data)
{
  const Tint64 whole = Tint64(size) + (type ? 4 : 0);
  if (size < 0 || whole > INT_MAX)
    return FLfail(kFLbadSize);
  if (const int error = beginPut(id, Tint32(whole)))
    return error;
  const bool good = (!type || put(type, 4) == 4) && put(data, size) == size;
  const int failure = flerrno;
  const int error = endPut();
  return good ? error : FLfail(failure);
}

void* TiffFile::beginWriteBufferedChunk(TiffTag id, Tint32 size)
{
  if (isBuffering())
    return FLfail(kFLnestedWrite), nullptr;
  return FLbgnbufchunk(fFile, id.value(), size);
}

bool TiffFile::isTtyFile(const _FLfile* file)
{
  return file ? FListty(file->fTransport.fDescriptor) : (FLfail(kFLbadCall), false);
}

bool TiffFile::memoryInfo(void*& address, std::size_t& size) const
{
  if (!fFile || !fFile->fInMemory)
    return false;
  address = fFile->fBlock;
  size = fFile->fBlockSize;
  return true;
}

bool TiffFile::isBuffering() const
{
  return fFile && gBuffering.fOwner == fFile;
}

long TiffFile::copyToBuffer(const void* data, long count)
{
  int error = gBuffering.fFailure;
  if (gBuffering.fDepth < 0 && error == 0)
    error = kFLnoChunk;
  else if (count < 0 && error == 0)
    error = kFLbadSize;
  if (error != 0)
    return FLfail(error), 0;
  if (count > kMostBuffered - gBuffering.fTotal)
    return flushBuffers(true) == 0 ? FLput(fFile, data, count) : 0;
  ChunkBuffer& chunk = gBuffering.fChunks[gBuffering.fDepth];
  if (count + 4 > chunk.fCapacity - chunk.fUsed)
  {
    const long capacity = chunk.fCapacity + std::max(count + 4, kLeastGrowth);
    void* grown = std::realloc(chunk.fData, std::size_t(capacity));
    if (!grown)
      return failBuffering(kFLnoMemory), 0;
    chunk.fData = static_cast<unsigned char*>(grown);
    chunk.fCapacity = capacity;
  }
  FLcopy(chunk.fData + chunk.fUsed, data, std::size_t(count));
  chunk.fUsed += count;
  gBuffering.fTotal += count;
  return count;
}

// Writes a buffered chunk whole, or begins one of unknown size with what is there. Nothing stays open on failure.
int TiffFile::flushBuffer(long index, bool leaveOpen)
{
  const ChunkBuffer& chunk = gBuffering.fChunks[index];
  if (const int error = FLbgnputchunk(fFile, chunk.fTag.value(), leaveOpen ? -1 : Tint32(chunk.fUsed)))
    return error;
  const int error = FLput(fFile, chunk.fData, chunk.fUsed) == chunk.fUsed ? 0 : flerrno;
  if (leaveOpen && error == 0)
    return 0;
  const int endError = FLendputchunk(fFile);
  return error ? error : endError;
}

// Writes what is buffered: as a group of exact size, or, when it overflows, what there is of the group or the chunks.
int TiffFile::flushBuffers(bool overflows)
{
  const TuInt32 group = gBuffering.fGroup.value(), type = gBuffering.fType.value();
  fsNeedToBufferData = false;
  int error = 0;
  if (gBuffering.fInGroup)
    error = overflows ? FLbgnwritegroup(fFile, group, type) : FLbgnwritegroupsize(fFile, group, type, groupSize());
  const bool begun = gBuffering.fInGroup && error == 0;
  for (long i = 0; i <= gBuffering.fDepth && error == 0; ++i)
    error = flushBuffer(i, overflows && i == gBuffering.fDepth);
  if (begun && (error != 0 || !overflows))
  {
    const int endError = FLendwritegroup(fFile);
    error = error ? error : endError;
  }
  if (overflows && error != 0)
    return failBuffering(error);
  releaseBuffers();
  return error ? FLfail(error) : 0;
}

int TiffFile::failBuffering(int error)
{
  fsNeedToBufferData = false;
  gBuffering.fFailure = error;
  return FLfail(error);
}
