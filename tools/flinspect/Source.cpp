#include "Source.h"

#include "Terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <vector>

namespace {

constexpr Tint64 kProgressStep = 0x100000;
constexpr std::size_t kBlock = 0x10000;

} // namespace

Source::Source(Console& console, const std::string& name, bool openForms)
  : fConsole(console)
  , fName(name == "-" ? "standard input" : name)
{
  if (name == "-")
  {
    const Tint64 left = bytesLeft(0);
    fFile.reset(FLopen(left < 0 ? "fd:0" : ("fd:0," + std::to_string(left)).c_str(), "r"));
  }
  else if (openForms)
  {
    // An address on a command line is nobody's memory.
    FLsetnameforms(kFLformAll & ~static_cast<unsigned>(kFLformMem));
    fFile.reset(FLopen(name.c_str(), "r"));
  }
  else
    fFile.reset(FLopenpath(name.c_str(), "r"));
  if (!fFile)
    fail(flerrno);
  examine();
}

void Source::examine()
{
  char byte = 0;
  flerrno = 0;
  if (FLread(fFile.get(), &byte, 1) != 1)
  {
    if (flerrno != 0)
      fail(flerrno);
    return; // empty: nothing to seek in
  }
  fSeeks = FLseek(fFile.get(), 0, 0) == 0;
  if (!fSeeks && FLunread(fFile.get(), &byte, 1) != 0)
    fail(flerrno);
  if (fSeeks && FLseek(fFile.get(), 0, 2) == 0)
  {
    fSize = FLtell(fFile.get());
    if (FLseek(fFile.get(), 0, 0) != 0)
      fail(flerrno);
  }
}

std::size_t Source::read(void* buffer, std::size_t count)
{
  flerrno = 0; // only a failure sets it
  const long got = FLread(fFile.get(), buffer, static_cast<long>(count));
  const auto bytes = static_cast<std::size_t>(got);
  if (bytes < count && flerrno != 0)
    fail(flerrno);
  fPosition += got;
  if (fPosition >= fNextProgress)
  {
    fConsole.progress(fPosition, fSize);
    fNextProgress = fPosition + kProgressStep;
  }
  return bytes;
}

void Source::unread(const void* bytes, std::size_t count)
{
  if (FLunread(fFile.get(), bytes, static_cast<long>(count)) != 0)
    fail(flerrno);
  fPosition -= static_cast<Tint64>(count);
}

Tint64 Source::skip(Tint64 count)
{
  const Tint64 start = fPosition;
  if (fSize >= 0)
  {
    const Tint64 step = std::min(count, std::max<Tint64>(fSize - fPosition, 0));
    if (step > 0 && FLseek(fFile.get(), step, 1) != 0)
      fail(flerrno);
    fPosition += step;
    return step;
  }
  std::array<char, kBlock> block;
  while (fPosition - start < count)
  {
    const auto piece = static_cast<std::size_t>(std::min<Tint64>(count - (fPosition - start), kBlock));
    if (read(block.data(), piece) < piece)
      break;
  }
  return fPosition - start;
}

void Source::rewind()
{
  if (FLseek(fFile.get(), 0, 0) != 0)
    fail(flerrno);
  fPosition = 0;
  fNextProgress = 0;
}

void Source::spool()
{
  if (fSeeks)
    return;
  replace([this](const std::string& path, _FLfile* copy) {
    std::vector<char> block(kBlock);
    for (std::size_t count = kBlock; count == kBlock;)
    {
      count = read(block.data(), block.size());
      if (FLwrite(copy, block.data(), static_cast<long>(count)) != static_cast<long>(count))
        throw Failure(path, FLstrerror(flerrno));
    }
  });
}

void Source::replace(const std::function<void(const std::string& path, _FLfile* file)>& write)
{
  std::string path;
  const auto stem = std::filesystem::temp_directory_path() / "flinspect";
  std::unique_ptr<_FLfile, Close> copy(createBeside(stem.string(), path));
  FLsettmp(copy.get());
  removeOnSignal(path);
  write(path, copy.get());
  close();
  if (FLflush(copy.get()) != 0)
    throw Failure(path, FLstrerror(flerrno));
  fTemporary = std::move(copy);
  fFile.reset(FLopenpath(path.c_str(), "r"));
  if (!fFile)
    throw Failure(path, FLstrerror(flerrno));
  fPosition = 0;
  fNextProgress = 0;
  examine();
}

void Source::close()
{
  if (FLclose(fFile.release()) != 0)
    fail(flerrno);
}

void Source::fail(int code) const
{
  throw Failure(fFile ? fName + ": offset " + std::to_string(fPosition) : fName, FLstrerror(code));
}

_FLfile* createBeside(const std::string& stem, std::string& path)
{
  for (int number = 1;; ++number)
  {
    path = stem + "." + std::to_string(number);
    if (_FLfile* file = FLopenpath(path.c_str(), "w+x"))
      return file;
    std::error_code ignored;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, ignored)))
      throw Failure(stem, FLstrerror(flerrno));
  }
}
