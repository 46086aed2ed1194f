#include "Terminal.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>

#ifdef _WIN32
#  include <fcntl.h>
#  include <io.h>
#  include <sys/stat.h>
#  include <windows.h>
#else
#  include <sys/ioctl.h>
#  include <sys/stat.h>
#  include <unistd.h>
#endif

namespace {

#ifdef _WIN32
constexpr int kEndingSignals[] = {SIGINT, SIGTERM};
#else
constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
#endif

// A signal handler may touch little more than this; empty where no file is to be removed.
char gDoomedPaths[4][4096];

extern "C" void removeAndEnd(int signal)
{
  for (const char* path : gDoomedPaths)
    if (*path != 0)
    {
#ifdef _WIN32
      _unlink(path);
#else
      unlink(path);
#endif
    }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

} // namespace

void removeOnSignal(const std::string& path)
{
  char(*const place)[4096] =
    std::find_if(std::begin(gDoomedPaths), std::end(gDoomedPaths), [](const char* each) { return *each == 0; });
  if (place == std::end(gDoomedPaths) || path.size() >= sizeof *place)
    return;
  std::memcpy(*place, path.c_str(), path.size() + 1);
  for (const int signal : kEndingSignals)
    if (std::signal(signal, removeAndEnd) == SIG_IGN)
      std::signal(signal, SIG_IGN); // as nohup wants it
}

void keepOnSignal(const std::string& path)
{
  for (char* place : gDoomedPaths)
    if (path == place)
      *place = 0;
}

#ifdef _WIN32

bool isTerminal(int descriptor)
{
  // The null device is a character device too, but has no console mode.
  DWORD mode = 0;
  return GetConsoleMode(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &mode) != 0;
}

int terminalWidth(int descriptor)
{
  CONSOLE_SCREEN_BUFFER_INFO info;
  return GetConsoleScreenBufferInfo(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &info) != 0
           ? info.srWindow.Right - info.srWindow.Left + 1
           : 80;
}

void setBinaryStreams()
{
  for (int descriptor = 0; descriptor <= 2; ++descriptor)
    _setmode(descriptor, _O_BINARY);
}

Tint64 bytesLeft(int descriptor)
{
  struct _stat64 status;
  if (_fstat64(descriptor, &status) != 0 || (status.st_mode & S_IFMT) != S_IFREG)
    return -1;
  const Tint64 position = _lseeki64(descriptor, 0, SEEK_CUR);
  return position < 0 || position > status.st_size ? -1 : status.st_size - position;
}

#else

bool isTerminal(int descriptor)
{
  return isatty(descriptor) != 0;
}

int terminalWidth(int descriptor)
{
  winsize size{};
  return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

void setBinaryStreams() {}

Tint64 bytesLeft(int descriptor)
{
  struct stat status;
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
    return -1;
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  return position < 0 || position > status.st_size ? -1 : status.st_size - position;
}

#endif
