#include "Foundation/File/Tdirectory.h"

#include "Foundation/Platform/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <utility>

namespace {

// Makes the directory unless it is there.
long makeOne(std::string_view path)
{
  const Tdirectory directory{Tstring(path)};
  const long status = Platform::makeFolder(directory.path().asC());
  return status != 0 && directory.isDirectory() ? 0 : status;
}

// The path that one of the calls of the platform writes, "" when it fails.
template <class Call>
TfilePath pathFrom(Call call)
{
  char path[4096];
  return call(path, sizeof path) == 0 ? TfilePath(path) : TfilePath();
}

TfilePath place(Platform::PlaceKind kind, const char* below)
{
  for (const Platform::Place& each : Platform::kPlaces[kind])
  {
    const char* const value = each.variable ? std::getenv(each.variable) : "";
    if (value && (!each.variable || Platform::isAbsolutePath(value)))
      return Tstring(value) + each.below + below;
  }
  return {};
}

} // namespace

TappDirectory::TappDirectory() noexcept
  : Tdirectory(pathFrom(Platform::programPath).directory())
{
}

#define PLACED(Class, kind, below)                                                                                     \
  Class::Class() noexcept                                                                                              \
    : Tdirectory(place(Platform::kind, below))                                                                         \
  {                                                                                                                    \
  }

PLACED(TtemporaryDirectory, kTemporaryPlace, "")
PLACED(TpreferencesDirectory, kSettingsPlace, "")
PLACED(TuserBitmapsDirectory, kDataPlace, "/bitmaps")
PLACED(TuserScriptDirectory, kDataPlace, "/scripts")
PLACED(TuserShelfDirectory, kDataPlace, "/shelves")

Tdirectory Tdirectory::current() noexcept
{
  return Tdirectory(pathFrom(Platform::currentFolder));
}

long Tdirectory::create() const noexcept
{
  constexpr auto npos = std::string_view::npos;
  const std::string_view path = systemPath(fPath);
  // Up to the first one whose parent is there, and down again.
  std::size_t end = path.size();
  long status = makeOne(path);
  while (status == ENOENT)
  {
    end = path.find_last_of(Platform::kSeparators, end - 1);
    end = end == npos ? npos : path.find_last_not_of(Platform::kSeparators, end);
    if (end == npos)
      break;
    status = makeOne(path.substr(0, ++end));
  }
  while (status == 0 && end != path.size())
  {
    end = path.find_first_not_of(Platform::kSeparators, end);
    end = std::min(path.find_first_of(Platform::kSeparators, end), path.size());
    status = makeOne(path.substr(0, end));
  }
  return status;
}

long Tdirectory::list(TstringArray& names) const noexcept
{
  TstringArray found;
  const auto add = [](void* array, const char* name) {
    try
    {
      static_cast<TstringArray*>(array)->addLast(Tstring(name));
      return static_cast<TstringArray*>(array)->last() == name ? 0 : ENOMEM;
    }
    catch (const std::exception&)
    {
      return ENOMEM;
    }
  };
  const long status = Platform::listFolder(systemPath(fPath), add, &found);
  std::sort(found.begin(), found.end());
  names = status == 0 ? std::move(found) : TstringArray();
  return status;
}
