/// \file
/// The entries of the file system by path, and where the system wants a user's files. Internal to the library.
///
/// What returns int returns 0 or an errno.

#pragma once

#include "Foundation/Platform/Types.h"

#include <cstddef>

namespace Platform {

struct FileStatus
{
  enum Kind
  {
    file, // regular
    folder,
    other
  };
  Kind kind;
  Tint64 size;     // of a file, in bytes
  Tint64 modified; // seconds since the beginning of 1970, UTC
};

/// What a path leads to, behind symbolic links.
int fileStatus(const char* path, FileStatus& result);

/// Makes one folder, in one that exists.
int makeFolder(const char* path);

/// Removes a file, a link or an empty folder.
int removeEntry(const char* path);

/// Gives an entry another path on the same volume; a file takes the place of a file.
int renameEntry(const char* from, const char* to);

/// Calls \p visit with the name of each entry but "." and "..", in no order, until it returns an errno.
int listFolder(const char* path, int (*visit)(void* context, const char* name), void* context);

/// The absolute path of the current folder, and of the program that is running.
int currentFolder(char* result, std::size_t size);
int programPath(char* result, std::size_t size);

/// Characters that separate the parts of a path.
extern const char* const kSeparators;
bool isAbsolutePath(const char* path);

/// Where a user's files are: below the value of the first variable that is an absolute path. A null variable stands
/// for "".
struct Place
{
  const char* variable;
  const char* below;
};
enum PlaceKind
{
  kTemporaryPlace,
  kSettingsPlace,
  kDataPlace
};
extern const Place kPlaces[3][2];

} // namespace Platform
