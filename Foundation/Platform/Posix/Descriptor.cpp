#include "Foundation/Platform/Descriptor.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <pwd.h>
#include <sys/stat.h>
#include <syslog.h>
#include <termios.h>
#include <unistd.h>

namespace Platform {

namespace {

// One call moves at most this much, so that counts fit every interface below.
constexpr std::size_t kMostAtOnce = std::size_t(1) << 30;

} // namespace

bool worthAnotherTry(int descriptor, bool writing)
{
  if (errno == EINTR)
    return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK)
    return false;
  pollfd ready{descriptor, short(writing ? POLLOUT : POLLIN), 0};
  return poll(&ready, 1, -1) >= 0 || errno == EINTR;
}

bool aboveStandard(int& descriptor)
{
  if (descriptor > 2)
    return true;
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  const int savedError = errno;
  close(descriptor);
  errno = savedError;
  descriptor = moved;
  return moved >= 0;
}

int openFile(const char* path, unsigned flags)
{
  int how = O_CLOEXEC | O_NOCTTY;
  how |= (flags & kOpenRead) && (flags & kOpenWrite) ? O_RDWR : flags & kOpenWrite ? O_WRONLY : O_RDONLY;
  if (flags & kOpenCreate)
    how |= O_CREAT | (flags & kOpenExclusive ? O_EXCL : O_TRUNC);
  if (flags & kOpenAppend)
    how |= O_CREAT | O_APPEND;
  int descriptor;
  do
    descriptor = open(path, how, 0666);
  while (descriptor < 0 && errno == EINTR);
  return descriptor < 0 || !aboveStandard(descriptor) ? -1 : descriptor;
}

int openTemporary()
{
  const char* folder = std::getenv("TMPDIR");
  char path[4096];
  const int length = std::snprintf(path, sizeof path, "%s/chunkXXXXXX", folder && *folder ? folder : "/tmp");
  if (length < 0 || std::size_t(length) >= sizeof path)
  {
    errno = ENAMETOOLONG;
    return -1;
  }
  int descriptor = mkostemp(path, O_CLOEXEC);
  if (descriptor >= 0)
    unlink(path);
  return descriptor < 0 || !aboveStandard(descriptor) ? -1 : descriptor;
}

bool examine(int descriptor, Examination& result)
{
  struct stat status;
  if (fstat(descriptor, &status) != 0)
    return false;
  const mode_t type = status.st_mode & S_IFMT;
  if (type == S_IFREG)
    result.kind = Examination::file;
  else if (type == S_IFIFO || type == S_IFCHR || type == S_IFSOCK || type == 0)
    result.kind = Examination::stream;
  else
    result.kind = Examination::other;
  result.size = type == S_IFREG ? Tint64(status.st_size) : 0;
  const int state = fcntl(descriptor, F_GETFL);
  result.appends = state >= 0 && (state & O_APPEND);
  return true;
}

std::ptrdiff_t readSome(int descriptor, void* buffer, std::size_t count)
{
  ssize_t got;
  do
    got = read(descriptor, buffer, count < kMostAtOnce ? count : kMostAtOnce);
  while (got < 0 && worthAnotherTry(descriptor, false));
  return got;
}

std::ptrdiff_t writeSome(int descriptor, const void* bytes, std::size_t count)
{
  ssize_t put;
  do
    put = write(descriptor, bytes, count < kMostAtOnce ? count : kMostAtOnce);
  while (put < 0 && worthAnotherTry(descriptor, true));
  return put;
}

Tint64 seekTo(int descriptor, Tint64 offset, int whence)
{
  return lseek(descriptor, off_t(offset), whence);
}

bool closeFile(int descriptor)
{
  // An interrupted close has released the descriptor all the same.
  return close(descriptor) == 0 || errno == EINTR;
}

bool removeFile(const char* path)
{
  return unlink(path) == 0;
}

int descriptorOf(std::FILE* stream)
{
  return fileno(stream);
}

Tint64 streamOffset(std::FILE* stream)
{
  return ftello(stream);
}

bool seekStream(std::FILE* stream, Tint64 offset)
{
  return fseeko(stream, off_t(offset), SEEK_SET) == 0;
}

int setBinary(int)
{
  return 0;
}

void restoreMode(int, int) {}

PipeSignalHold::PipeSignalHold()
{
  sigset_t pipeSignal, pending, before;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  sigpending(&pending);
  fWasPending = sigismember(&pending, SIGPIPE) == 1;
  fHeld = pthread_sigmask(SIG_BLOCK, &pipeSignal, &before) == 0 && sigismember(&before, SIGPIPE) == 0;
}

PipeSignalHold::~PipeSignalHold()
{
  const int savedError = errno;
  sigset_t pipeSignal;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  if (!fWasPending) // take back the one that the write may have raised
  {
    const timespec now{};
    while (sigtimedwait(&pipeSignal, nullptr, &now) < 0 && errno == EINTR)
    {
    }
  }
  if (fHeld)
    pthread_sigmask(SIG_UNBLOCK, &pipeSignal, nullptr);
  errno = savedError;
}

int duplicate(int descriptor)
{
  return dup(descriptor);
}

int duplicateTo(int descriptor, int target)
{
  return dup2(descriptor, target);
}

int control(int descriptor, int command, long argument)
{
  return fcntl(descriptor, command, argument);
}

int synchronise(int descriptor)
{
  return fsync(descriptor);
}

bool isTerminal(int descriptor)
{
  return isatty(descriptor) == 1;
}

const char* terminalName(int descriptor)
{
  return ttyname(descriptor);
}

int drainTerminal(int descriptor)
{
  return tcdrain(descriptor);
}

int terminalGroup(int descriptor)
{
  return int(tcgetpgrp(descriptor));
}

void rewindUsers()
{
  setpwent();
}

void closeUsers()
{
  endpwent();
}

void rewindGroups()
{
  setgrent();
}

void closeGroups()
{
  endgrent();
}

void closeLog()
{
  closelog();
}

bool setEnvironment(const char* name, const char* value)
{
  return setenv(name, value, 1) == 0;
}

} // namespace Platform
