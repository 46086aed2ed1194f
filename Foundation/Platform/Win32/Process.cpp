#include "Foundation/Platform/Process.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <io.h>
#include <string>
#include <winsock2.h>

#include <windows.h>

namespace Platform {

const char kPathSeparator = ';';
const bool kTellsBrokenOutput = false;
const char* const kLibraryDirectories = "C:\\Program Files\\Common Files\\flib";

namespace {

// Appends an argument the way the runtime of the program that gets it takes it apart again.
void appendArgument(std::string& line, const char* argument)
{
  if (!line.empty())
    line += ' ';
  line += '"';
  std::size_t backslashes = 0;
  for (const char* at = argument; *at; ++at)
  {
    if (*at == '\\')
      ++backslashes;
    else
    {
      if (*at == '"')
        line.append(backslashes + 1, '\\');
      backslashes = 0;
    }
    line += *at;
  }
  line.append(backslashes, '\\');
  line += '"';
}

// A handle for the child alone: of the descriptor, or of the standard stream in its place.
HANDLE inheritable(int descriptor, DWORD standard)
{
  const HANDLE own = descriptor >= 0 ? reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)) : GetStdHandle(standard);
  HANDLE copy = nullptr;
  if (own && own != INVALID_HANDLE_VALUE)
    DuplicateHandle(GetCurrentProcess(), own, GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
  return copy;
}

Process start(const char* program, std::string line, int input, int output)
{
  HANDLE handles[3] = {inheritable(input, STD_INPUT_HANDLE), inheritable(output, STD_OUTPUT_HANDLE),
                       inheritable(-1, STD_ERROR_HANDLE)};
  STARTUPINFOEXA startup = {};
  startup.StartupInfo.cb = sizeof startup;
  startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  startup.StartupInfo.hStdInput = handles[0];
  startup.StartupInfo.hStdOutput = handles[1];
  startup.StartupInfo.hStdError = handles[2];

  // Only these are inherited: another handle of a pipe in the child would keep the pipe from ending.
  HANDLE given[3];
  DWORD count = 0;
  for (HANDLE handle : handles)
  {
    if (handle)
      given[count++] = handle;
  }
  SIZE_T size = 0;
  InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
  std::string list(size, '\0');
  startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(list.data());
  PROCESS_INFORMATION started = {};
  BOOL good = InitializeProcThreadAttributeList(startup.lpAttributeList, 1, 0, &size);
  if (good)
  {
    good = UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, given,
                                     count * sizeof(HANDLE), nullptr, nullptr) &&
           CreateProcessA(program, line.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                          &startup.StartupInfo, &started);
    const DWORD error = GetLastError();
    DeleteProcThreadAttributeList(startup.lpAttributeList);
    errno = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? ENOENT : EACCES;
  }
  else
    errno = ENOMEM;
  for (HANDLE handle : handles)
  {
    if (handle)
      CloseHandle(handle);
  }
  if (!good)
    return 0;
  CloseHandle(started.hThread);
  return reinterpret_cast<Process>(started.hProcess);
}

bool isProgram(const char* path)
{
  const DWORD attributes = GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

} // namespace

bool openPipe(int ends[2])
{
  return _pipe(ends, 65536, _O_BINARY | _O_NOINHERIT) == 0;
}

Process startProgram(const char* const* argv, int input, int output)
try
{
  std::string line;
  for (const char* const* argument = argv; *argument; ++argument)
    appendArgument(line, *argument);
  return start(argv[0], line, input, output);
}
catch (const std::exception&) // of memory: the process's new handler chooses which
{
  errno = ENOMEM;
  return 0;
}

Process startShell(const char* command, int input, int output)
try
{
  const char* shell = std::getenv("COMSPEC");
  char folder[MAX_PATH + 1];
  const UINT length = GetSystemDirectoryA(folder, sizeof folder);
  const std::string usual = std::string(folder, length <= MAX_PATH ? length : 0) + "\\cmd.exe";
  // The shell takes what stands between the outer quotes as it is.
  return start(shell ? shell : usual.c_str(), std::string("cmd /s /c \"") + command + '"', input, output);
}
catch (const std::exception&) // of memory: the process's new handler chooses which
{
  errno = ENOMEM;
  return 0;
}

Ending waitFor(Process child)
{
  const HANDLE process = reinterpret_cast<HANDLE>(child);
  DWORD status = 1;
  const bool known = WaitForSingleObject(process, INFINITE) == WAIT_OBJECT_0 && GetExitCodeProcess(process, &status);
  CloseHandle(process);
  if (!known)
    return Ending::failure;
  // The system's own codes of a process that did not end by itself have their top bits set.
  if (status >= 0xC0000000UL)
    return Ending::killed;
  return status == 0 ? Ending::success : Ending::failure;
}

bool findProgram(const char* name, const char* path, char* result, std::size_t size)
{
  for (const char* folder = path; folder;)
  {
    const std::size_t length = std::strcspn(folder, ";");
    for (const char* suffix : {".exe", ""})
    {
      const int total = length == 0 ? std::snprintf(result, size, ".\\%s%s", name, suffix)
                                    : std::snprintf(result, size, "%.*s\\%s%s", int(length), folder, name, suffix);
      if (total > 0 && std::size_t(total) < size && isProgram(result))
        return true;
    }
    folder = folder[length] ? folder + length + 1 : nullptr;
  }
  return false;
}

bool hostResolves(const char* host)
{
  WSADATA data;
  if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
    return false;
  const bool found = gethostbyname(host) != nullptr;
  WSACleanup();
  return found;
}

} // namespace Platform
