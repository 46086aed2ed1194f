#include "Foundation/Platform/MappedFile.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace Platform {

namespace {

std::atomic<MappedFile*> gMappings{nullptr};
struct sigaction gBefore; // the action for the signal before ours

void onMissingPage(int signal, siginfo_t* info, void* context)
{
  const int savedError = errno;
  if (!MappedFile::repair(info->si_addr))
  {
    if (gBefore.sa_flags & SA_SIGINFO)
      gBefore.sa_sigaction(signal, info, context);
    else if (gBefore.sa_handler != SIG_DFL && gBefore.sa_handler != SIG_IGN)
      gBefore.sa_handler(signal);
    else
      sigaction(signal, &gBefore, nullptr); // the access is repeated, and then meets its usual end
  }
  errno = savedError;
}

bool isOurs(const struct sigaction& action)
{
  return (action.sa_flags & SA_SIGINFO) && action.sa_sigaction == onMissingPage;
}

} // namespace

bool MappedFile::open(int descriptor, Tint64 size)
{
  if (size < 0 || TuInt64(size) > PTRDIFF_MAX)
  {
    errno = ENOMEM;
    return false;
  }
  fSize = std::size_t(size);
  fShrunk = 0;
  if (fSize == 0) // nothing to map; the system refuses it
    return true;
  void* base = mmap(nullptr, fSize, PROT_READ, MAP_SHARED, descriptor, 0);
  if (base == MAP_FAILED)
  {
    fSize = 0;
    return false;
  }
  fBase = static_cast<unsigned char*>(base);
  struct sigaction action;
  if (sigaction(SIGBUS, nullptr, &action) == 0 && !isOurs(action))
  {
    gBefore = action;
    action.sa_sigaction = onMissingPage;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, nullptr);
  }
  fNext = gMappings;
  gMappings = this;
  return true;
}

void MappedFile::close()
{
  if (!fBase)
    return;
  if (gMappings == this)
    gMappings = fNext;
  for (MappedFile* other = gMappings; other; other = other->fNext)
  {
    if (other->fNext == this)
      other->fNext = fNext;
  }
  munmap(fBase, fSize);
  fBase = nullptr;
  struct sigaction action;
  if (!gMappings && sigaction(SIGBUS, nullptr, &action) == 0 && isOurs(action))
    sigaction(SIGBUS, &gBefore, nullptr);
}

bool MappedFile::repair(void* address)
{
  for (MappedFile* mapping = gMappings; mapping; mapping = mapping->fNext)
  {
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    const auto base = reinterpret_cast<std::uintptr_t>(mapping->fBase);
    if (place < base || place - base >= mapping->fSize)
      continue;
    // All that follows the missing page is missing too.
    const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
    const std::uintptr_t from = place & ~(page - 1);
    if (mmap(reinterpret_cast<void*>(from), base + mapping->fSize - from, PROT_READ,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED)
      return false;
    mapping->fShrunk = 1;
    return true;
  }
  return false;
}

} // namespace Platform
