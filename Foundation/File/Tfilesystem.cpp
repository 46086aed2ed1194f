#include "Foundation/File/Tfilesystem.h"

#include "Foundation/Platform/FileSystem.h"

#include <optional>
#include <ostream>
#include <utility>

namespace {

std::optional<Platform::FileStatus> statusOf(const char* path)
{
  Platform::FileStatus status;
  return Platform::fileStatus(path, status) == 0 ? std::optional(status) : std::nullopt;
}

} // namespace

Tfilesystem::Tfilesystem(TfilePath path) noexcept
  : fPath(std::move(path))
{
}

Tfilesystem::~Tfilesystem() = default;

const char* Tfilesystem::systemPath(const TfilePath& path) noexcept
{
  return path.asString().findchr('\0') < 0 ? path.asC() : "";
}

bool Tfilesystem::exists() const noexcept
{
  return statusOf(systemPath(fPath)).has_value();
}

bool Tfilesystem::isDirectory() const noexcept
{
  const auto status = statusOf(systemPath(fPath));
  return status && status->kind == Platform::FileStatus::folder;
}

bool Tfilesystem::isFile() const noexcept
{
  return size() >= 0;
}

Tint64 Tfilesystem::size() const noexcept
{
  const auto status = statusOf(systemPath(fPath));
  return status && status->kind == Platform::FileStatus::file ? status->size : -1;
}

Ttime Tfilesystem::modificationTime() const noexcept
{
  const auto status = statusOf(systemPath(fPath));
  return status ? Ttime(static_cast<TuInt32>(status->modified)) : Ttime();
}

long Tfilesystem::remove() const noexcept
{
  return Platform::removeEntry(systemPath(fPath));
}

long Tfilesystem::rename(const TfilePath& path) noexcept
{
  const long status = Platform::renameEntry(systemPath(fPath), systemPath(path));
  if (status == 0)
    fPath = path;
  return status;
}

std::ostream& operator<<(std::ostream& out, const Tfilesystem& entry)
{
  return out << entry.path();
}
