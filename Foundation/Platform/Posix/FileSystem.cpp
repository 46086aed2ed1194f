#include "Foundation/Platform/FileSystem.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Platform {

const char* const kSeparators = "/";

const Place kPlaces[3][2] = {
  {{"TMPDIR", ""}, {nullptr, "/tmp"}},
  {{"XDG_CONFIG_HOME", "/vexa"}, {"HOME", "/.config/vexa"}},
  {{"XDG_DATA_HOME", "/vexa"}, {"HOME", "/.local/share/vexa"}},
};

namespace {

int status(bool succeeded)
{
  return succeeded ? 0 : errno;
}

} // namespace

bool isAbsolutePath(const char* path)
{
  return *path == '/';
}

int fileStatus(const char* path, FileStatus& result)
{
  struct stat found;
  if (stat(path, &found) != 0)
    return errno;
  result.kind = S_ISREG(found.st_mode)   ? FileStatus::file
                : S_ISDIR(found.st_mode) ? FileStatus::folder
                                         : FileStatus::other;
  result.size = found.st_size;
  result.modified = found.st_mtime;
  return 0;
}

int makeFolder(const char* path)
{
  return status(mkdir(path, 0777) == 0);
}

int removeEntry(const char* path)
{
  return status(std::remove(path) == 0);
}

int renameEntry(const char* from, const char* to)
{
  return status(std::rename(from, to) == 0);
}

int listFolder(const char* path, int (*visit)(void* context, const char* name), void* context)
{
  DIR* const folder = opendir(path);
  if (!folder)
    return errno;
  int result = 0;
  while (result == 0)
  {
    errno = 0;
    const dirent* const entry = readdir(folder);
    if (!entry)
    {
      result = errno;
      break;
    }
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      result = visit(context, entry->d_name);
  }
  closedir(folder);
  return result;
}

int currentFolder(char* result, std::size_t size)
{
  return status(getcwd(result, size) != nullptr);
}

int programPath(char* result, std::size_t size)
{
  const ssize_t length = readlink("/proc/self/exe", result, size);
  if (length < 0)
    return errno;
  if (static_cast<std::size_t>(length) == size)
    return ENAMETOOLONG;
  result[length] = '\0';
  return 0;
}

} // namespace Platform
