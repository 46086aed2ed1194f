#include "Foundation/Platform/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace Platform {

namespace {

// One call moves at most this much: the runtime counts in int, and consoles and pipes take no more at once.
constexpr std::size_t kMostAtOnce = std::size_t(1) << 20;

int unsupported()
{
  errno = ENOSYS;
  return -1;
}

} // namespace

int openFile(const char* path, unsigned flags)
{
  const DWORD attributes = GetFileAttributesA(path);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
  {
    errno = EISDIR;
    return -1;
  }
  int how = _O_BINARY | _O_NOINHERIT;
  how |= (flags & kOpenRead) && (flags & kOpenWrite) ? _O_RDWR : flags & kOpenWrite ? _O_WRONLY : _O_RDONLY;
  if (flags & kOpenCreate)
    how |= _O_CREAT | (flags & kOpenExclusive ? _O_EXCL : _O_TRUNC);
  if (flags & kOpenAppend)
    how |= _O_CREAT | _O_APPEND;
  return _open(path, how, _S_IREAD | _S_IWRITE);
}

int openTemporary()
{
  char folder[MAX_PATH + 1];
  char path[MAX_PATH + 1];
  if (GetTempPathA(sizeof folder, folder) == 0 || GetTempFileNameA(folder, "chk", 0, path) == 0)
  {
    errno = EACCES;
    return -1;
  }
  const int descriptor =
    _open(path, _O_RDWR | _O_CREAT | _O_TRUNC | _O_TEMPORARY | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
  if (descriptor < 0)
    DeleteFileA(path); // which the system made to reserve the name
  return descriptor;
}

// A child's standard streams are given as handles: it does not matter which descriptors they have here.
bool aboveStandard(int&)
{
  return true;
}

bool worthAnotherTry(int, bool)
{
  return errno == EINTR;
}

bool examine(int descriptor, Examination& result)
{
  const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  if (handle == INVALID_HANDLE_VALUE)
    return false;
  result.kind = GetFileType(handle) == FILE_TYPE_DISK ? Examination::file : Examination::stream;
  result.size = result.kind == Examination::file ? _filelengthi64(descriptor) : 0;
  result.appends = false; // the runtime appends by seeking, which patching can undo
  return result.size >= 0;
}

std::ptrdiff_t readSome(int descriptor, void* buffer, std::size_t count)
{
  return _read(descriptor, buffer, unsigned(count < kMostAtOnce ? count : kMostAtOnce));
}

std::ptrdiff_t writeSome(int descriptor, const void* bytes, std::size_t count)
{
  const int put = _write(descriptor, bytes, unsigned(count < kMostAtOnce ? count : kMostAtOnce));
  // A pipe whose reader has gone is reported as a bad argument.
  if (put < 0 && errno == EINVAL && (_doserrno == ERROR_NO_DATA || _doserrno == ERROR_BROKEN_PIPE))
    errno = EPIPE;
  return put;
}

Tint64 seekTo(int descriptor, Tint64 offset, int whence)
{
  return _lseeki64(descriptor, offset, whence);
}

bool closeFile(int descriptor)
{
  return _close(descriptor) == 0;
}

bool removeFile(const char* path)
{
  return std::remove(path) == 0;
}

int descriptorOf(std::FILE* stream)
{
  return _fileno(stream);
}

Tint64 streamOffset(std::FILE* stream)
{
  return _ftelli64(stream);
}

bool seekStream(std::FILE* stream, Tint64 offset)
{
  return _fseeki64(stream, offset, SEEK_SET) == 0;
}

int setBinary(int descriptor)
{
  return _setmode(descriptor, _O_BINARY);
}

void restoreMode(int descriptor, int mode)
{
  if (mode > 0)
    _setmode(descriptor, mode);
}

// Writing to a pipe without a reader raises no signal here.
PipeSignalHold::PipeSignalHold() = default;
PipeSignalHold::~PipeSignalHold() = default;

int duplicate(int descriptor)
{
  return _dup(descriptor);
}

int duplicateTo(int descriptor, int target)
{
  return _dup2(descriptor, target) == 0 ? target : -1;
}

int control(int, int, long)
{
  return unsupported();
}

int synchronise(int descriptor)
{
  return _commit(descriptor);
}

bool isTerminal(int descriptor)
{
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
}

const char* terminalName(int)
{
  unsupported();
  return nullptr;
}

int drainTerminal(int)
{
  return unsupported();
}

int terminalGroup(int)
{
  return unsupported();
}

// There is no such database to rewind, and no such log.
void rewindUsers() {}
void closeUsers() {}
void rewindGroups() {}
void closeGroups() {}
void closeLog() {}

bool setEnvironment(const char* name, const char* value)
{
  return _putenv_s(name, value) == 0;
}

} // namespace Platform
