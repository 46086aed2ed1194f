/// \file
/// A file mapped into memory for reading, safe against being cut short meanwhile. Internal to the library.
///
/// Where a file can shrink under its mapping, touching what is gone raises a signal. While mappings exist a handler
/// puts zeros there and sets fShrunk, and passes every other such signal on to the handler before it.

#pragma once

#include "Foundation/Platform/Types.h"

#include <csignal>
#include <cstddef>

namespace Platform {

class MappedFile
{
public:
  MappedFile() = default;
  ~MappedFile() { close(); }
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  /// Maps the first \p size bytes of the file, which may be closed afterwards. False with errno.
  bool open(int descriptor, Tint64 size);
  void close();

  unsigned char* base() const { return fBase; }
  std::size_t size() const { return fSize; }

  /// Whether bytes were gone when they were touched. What was read then is zero.
  bool shrunk() const { return fShrunk != 0; }

  /// Handles a signal for \p address; false when it is in no mapping. For signal handlers.
  static bool repair(void* address);

private:
  unsigned char* fBase = nullptr;
  std::size_t fSize = 0;
  volatile std::sig_atomic_t fShrunk = 0;
  MappedFile* fNext = nullptr; // of all mappings
};

} // namespace Platform
