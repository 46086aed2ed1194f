#include "Foundation/Platform/MappedFile.h"

#include <cerrno>
#include <cstdint>
#include <io.h>
#include <windows.h>

namespace Platform {

bool MappedFile::open(int descriptor, Tint64 size)
{
  if (size < 0 || TuInt64(size) > PTRDIFF_MAX)
  {
    errno = ENOMEM;
    return false;
  }
  fSize = std::size_t(size);
  if (fSize == 0) // nothing to map; the system refuses it
    return true;
  const HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  const HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
  if (mapping)
  {
    fBase = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, fSize));
    CloseHandle(mapping); // the view keeps it
  }
  if (fBase)
    return true;
  fSize = 0;
  errno = GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? ENOMEM : EACCES;
  return false;
}

void MappedFile::close()
{
  if (fBase)
    UnmapViewOfFile(fBase);
  fBase = nullptr;
}

// The system does not let a file shrink while it is mapped.
bool MappedFile::repair(void*)
{
  return false;
}

} // namespace Platform
