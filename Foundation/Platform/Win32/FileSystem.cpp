#include "Foundation/Platform/FileSystem.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <windows.h>

namespace Platform {

const char* const kSeparators = "/\\";

const Place kPlaces[3][2] = {
  {{"TMP", ""}, {"TEMP", ""}},
  {{"APPDATA", "/vexa"}, {"USERPROFILE", "/AppData/Roaming/vexa"}},
  {{"APPDATA", "/vexa"}, {"USERPROFILE", "/AppData/Roaming/vexa"}},
};

namespace {

int status(bool succeeded)
{
  if (succeeded)
    return 0;
  switch (GetLastError())
  {
  case ERROR_FILE_NOT_FOUND:
  case ERROR_PATH_NOT_FOUND:
  case ERROR_INVALID_NAME:
  case ERROR_BAD_NETPATH: return ENOENT;
  case ERROR_ACCESS_DENIED:
  case ERROR_SHARING_VIOLATION: return EACCES;
  case ERROR_ALREADY_EXISTS:
  case ERROR_FILE_EXISTS: return EEXIST;
  case ERROR_DIR_NOT_EMPTY: return ENOTEMPTY;
  case ERROR_DIRECTORY: return ENOTDIR;
  case ERROR_NOT_SAME_DEVICE: return EXDEV;
  case ERROR_FILENAME_EXCED_RANGE: return ENAMETOOLONG;
  case ERROR_NOT_ENOUGH_MEMORY: return ENOMEM;
  default: return EIO;
  }
}

// What a call returned that wrote a path of that length, and that path with '/' between its parts.
int pathStatus(char* result, DWORD length, std::size_t size)
{
  if (length == 0)
    return status(false);
  if (length >= size)
    return ENAMETOOLONG;
  for (char* at = result; *at; ++at)
  {
    if (*at == '\\')
      *at = '/';
  }
  return 0;
}

} // namespace

bool isAbsolutePath(const char* path)
{
  return (path[0] && path[1] == ':') || (*path && std::strchr(kSeparators, *path));
}

int fileStatus(const char* path, FileStatus& result)
{
  WIN32_FILE_ATTRIBUTE_DATA found;
  if (!GetFileAttributesExA(path, GetFileExInfoStandard, &found))
    return status(false);
  result.kind = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY ? FileStatus::folder
                : found.dwFileAttributes & FILE_ATTRIBUTE_DEVICE  ? FileStatus::other
                                                                  : FileStatus::file;
  result.size = Tint64(TuInt64(found.nFileSizeHigh) << 32 | found.nFileSizeLow);
  // The system counts tenths of microseconds from the beginning of 1601.
  const TuInt64 time = TuInt64(found.ftLastWriteTime.dwHighDateTime) << 32 | found.ftLastWriteTime.dwLowDateTime;
  result.modified = Tint64(time / 10000000) - 11644473600;
  return 0;
}

int makeFolder(const char* path)
{
  return status(CreateDirectoryA(path, nullptr));
}

int removeEntry(const char* path)
{
  const DWORD attributes = GetFileAttributesA(path);
  return status(attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)
                  ? RemoveDirectoryA(path)
                  : DeleteFileA(path));
}

int renameEntry(const char* from, const char* to)
{
  return status(MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING));
}

int listFolder(const char* path, int (*visit)(void* context, const char* name), void* context)
{
  char pattern[MAX_PATH + 3];
  const int length = std::snprintf(pattern, sizeof pattern, "%s/*", path);
  if (length < 0 || std::size_t(length) >= sizeof pattern)
    return ENAMETOOLONG;
  WIN32_FIND_DATAA entry;
  const HANDLE search = *path ? FindFirstFileA(pattern, &entry) : INVALID_HANDLE_VALUE;
  if (search == INVALID_HANDLE_VALUE)
    return *path ? status(false) : ENOENT;
  int result = 0;
  do
  {
    if (std::strcmp(entry.cFileName, ".") != 0 && std::strcmp(entry.cFileName, "..") != 0)
      result = visit(context, entry.cFileName);
  }
  while (result == 0 && FindNextFileA(search, &entry));
  if (result == 0 && GetLastError() != ERROR_NO_MORE_FILES)
    result = status(false);
  FindClose(search);
  return result;
}

int currentFolder(char* result, std::size_t size)
{
  return pathStatus(result, GetCurrentDirectoryA(DWORD(size), result), size);
}

int programPath(char* result, std::size_t size)
{
  return pathStatus(result, GetModuleFileNameA(nullptr, result, DWORD(size)), size);
}

} // namespace Platform
