#include "Foundation/File/Tfile.h"

#include "Foundation/Platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr unsigned kBufferSize = 1 << 16;

// The flags of a mode; 0 for what is none.
unsigned flagsOf(const char* mode)
{
  if (!mode || (mode[0] && mode[1] && (!std::strchr("bt", mode[1]) || mode[2])))
    return 0;
  switch (mode[0])
  {
  case 'r': return Platform::kOpenRead;
  case 'w': return Platform::kOpenWrite | Platform::kOpenCreate;
  case 'a': return Platform::kOpenWrite | Platform::kOpenAppend;
  default: return 0;
  }
}

} // namespace

Tfile::Tfile() noexcept = default;

Tfile::Tfile(const Tstring& name, const char* mode) noexcept
{
  open(name, mode);
}

Tfile::Tfile(Tfile&& other) noexcept
{
  swap(other);
}

Tfile& Tfile::operator=(Tfile&& other) noexcept
{
  Tfile(std::move(other)).swap(*this);
  return *this;
}

Tfile::~Tfile()
{
  close();
}

void Tfile::swap(Tfile& other) noexcept
{
  fName.swap(other.fName);
  fBuffer.swap(other.fBuffer);
  std::swap(fNext, other.fNext);
  std::swap(fEnd, other.fEnd);
  std::swap(fDescriptor, other.fDescriptor);
  std::swap(fError, other.fError);
  std::swap(fWrites, other.fWrites);
  std::swap(fEnded, other.fEnded);
}

bool Tfile::fail(int error) noexcept
{
  if (fError == 0)
    fError = error;
  return false;
}

bool Tfile::open(const Tstring& name, const char* mode) noexcept
{
  if (isOpen() && !close())
    return false;
  fName = name;
  fError = 0;
  const unsigned flags = flagsOf(mode);
  if (flags == 0 || name.findchr('\0') >= 0)
    return fail(EINVAL);
  fBuffer.reset(new (std::nothrow) char[kBufferSize]);
  if (!fBuffer)
    return fail(ENOMEM);
  fDescriptor = Platform::openFile(name.asC(), flags);
  Platform::Examination found;
  if (fDescriptor < 0 || !Platform::examine(fDescriptor, found))
    fail(errno);
  else if (found.kind == Platform::Examination::other)
    fail(EISDIR);
  if (fError != 0)
    return close();
  fWrites = (flags & Platform::kOpenWrite) != 0;
  return true;
}

bool Tfile::write(const void* bytes, std::size_t count) noexcept
{
  if (!fWrites)
    return fail(EBADF);
  if (fError != 0 || (count > kBufferSize - fEnd && !flush()))
    return false;
  if (count >= kBufferSize)
    return drain(static_cast<const char*>(bytes), count);
  if (count != 0)
    std::memcpy(fBuffer.get() + fEnd, bytes, count);
  fEnd += static_cast<unsigned>(count);
  return true;
}

bool Tfile::put(const char* text) noexcept
{
  return write(text, text ? std::strlen(text) : 0);
}

bool Tfile::flush() noexcept
{
  return (!fWrites || drain(fBuffer.get(), std::exchange(fEnd, 0))) && fError == 0;
}

bool Tfile::drain(const char* bytes, std::size_t count) noexcept
{
  const Platform::PipeSignalHold hold;
  while (count != 0)
  {
    const std::ptrdiff_t put = Platform::writeSome(fDescriptor, bytes, count);
    if (put <= 0)
      return fail(put < 0 ? errno : ENOSPC);
    bytes += put;
    count -= static_cast<std::size_t>(put);
  }
  return true;
}

// Whether the buffer holds something to read, now or from the system.
bool Tfile::fill() noexcept
{
  if (!isOpen() || fWrites)
    return fail(EBADF);
  if (fError != 0 || fNext != fEnd || fEnded)
    return fError == 0 && !fEnded;
  const std::ptrdiff_t got = Platform::readSome(fDescriptor, fBuffer.get(), kBufferSize);
  if (got < 0)
    return fail(errno);
  fEnded = got == 0;
  fNext = 0;
  fEnd = static_cast<unsigned>(got);
  return !fEnded;
}

// Moves bytes of the buffer behind the text.
bool Tfile::take(Tstring& text, std::size_t count) noexcept
{
  const std::size_t length = text.length() + count;
  text.append(fBuffer.get() + fNext, static_cast<unsigned long>(count));
  fNext += static_cast<unsigned>(count);
  return text.length() == length || fail(ENOMEM);
}

std::size_t Tfile::read(void* buffer, std::size_t count) noexcept
{
  std::size_t done = 0;
  while (done != count && fill())
  {
    const std::size_t part = std::min<std::size_t>(count - done, fEnd - fNext);
    std::memcpy(static_cast<char*>(buffer) + done, fBuffer.get() + fNext, part);
    fNext += static_cast<unsigned>(part);
    done += part;
  }
  return done;
}

bool Tfile::readLine(Tstring& line) noexcept
{
  line.clear();
  bool found = false;
  for (bool ended = false; !ended && fill(); found = true)
  {
    const char* const start = fBuffer.get() + fNext;
    const void* const end = std::memchr(start, '\n', fEnd - fNext);
    ended = end != nullptr;
    if (!take(line, ended ? static_cast<std::size_t>(static_cast<const char*>(end) - start) : fEnd - fNext))
      break;
    fNext += ended;
    if (ended && line[line.length() - 1] == '\r')
      line.set(line.asC(), line.length() - 1);
  }
  if (fError != 0)
    line.clear();
  return found && fError == 0;
}

bool Tfile::readAll(Tstring& text) noexcept
{
  text.clear();
  while (fill() && take(text, fEnd - fNext))
  {
  }
  if (fError != 0)
    text.clear();
  return fError == 0;
}

bool Tfile::isAtEnd() noexcept
{
  return !isOpen() || fWrites || !fill();
}

bool Tfile::close() noexcept
{
  if (isOpen())
  {
    flush();
    if (!Platform::closeFile(std::exchange(fDescriptor, -1)))
      fail(errno);
  }
  fBuffer.reset();
  fNext = fEnd = 0;
  fWrites = fEnded = false;
  return fError == 0;
}
