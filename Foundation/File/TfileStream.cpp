#include "Foundation/File/TfileStream.h"

TfileStream::TfileStream() = default;

TfileStream::TfileStream(const TfilePath& path, std::ios::openmode mode)
{
  open(path, mode);
}

TfileStream::~TfileStream() = default;

bool TfileStream::open(const TfilePath& path, std::ios::openmode mode)
{
  const bool closed = !isOpen() || close();
  setPath(path);
  clear();
  if (!closed || isDirectory() || !rdbuf()->open(systemPath(path), mode | std::ios::binary))
    setstate(failbit | badbit);
  return isOpen();
}

bool TfileStream::close()
{
  if (isOpen() && !rdbuf()->close())
    setstate(badbit);
  return !bad();
}
