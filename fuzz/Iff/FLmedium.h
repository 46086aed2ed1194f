/// \file
/// Bytes in one of the media that a chunk file may be in, and the name that opens it. For the fuzzers.

#pragma once

#include "tests/Iff/Chunks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#ifndef _WIN32
#  include <fcntl.h>
#  include <sys/mman.h>
#  include <unistd.h>
#endif

#define REQUIRE(condition)                                                                                             \
  ((condition)                                                                                                         \
     ? void()                                                                                                          \
     : (std::fprintf(stderr, "%s:%d: %s (flerrno %d)\n", __FILE__, __LINE__, #condition, flerrno), std::abort()))

enum Medium : unsigned
{
  kBlock, // exactly as large as its bytes, so that the address sanitizer sees what goes beyond
  kPath,
  kMapped,
#ifdef _WIN32
  kMedia,
#endif
  kDescriptor, // from the fourth byte of the file on
  kFifo,       // reading: a pipe that gives a few bytes at a time; writing: a file that is only appended to
#ifndef _WIN32
  kMedia
#endif
};

class Held
{
public:
  Held(Medium medium, const std::string& bytes, bool reads)
    : fSize(bytes.size())
  {
    if (medium == kBlock)
    {
      fBlock = new char[fSize];
      bytes.copy(fBlock, fSize);
      fName = memoryName(fBlock, fSize);
      return;
    }
#ifdef _WIN32
    fName = fFolder.write("file", bytes);
    (void)reads;
#else
    int ends[2] = {-1, -1};
    const bool isPipe = medium == kFifo && reads;
    if (isPipe)
      REQUIRE(pipe2(ends, O_DIRECT) == 0); // each write is read by itself; there is room for 16
    else
      REQUIRE((ends[0] = ends[1] = memfd_create("fuzz", 0)) >= 0 &&
              (medium != kDescriptor || write(ends[0], "abc", 3) == 3));
    for (std::size_t at = 0, piece = fSize / 16 + 1; at < fSize; at += piece)
      REQUIRE(write(ends[1], bytes.data() + at, std::min(piece, fSize - at)) > 0);
    if (isPipe)
      close(ends[1]);
    else
      REQUIRE(lseek(ends[0], medium == kDescriptor ? 3 : 0, SEEK_SET) >= 0);
    REQUIRE(isPipe || medium != kFifo || fcntl(ends[0], F_SETFL, O_APPEND) == 0);
    fDescriptor = ends[0];
    fName = (medium <= kMapped ? "/proc/self/fd/" : "fd:") + std::to_string(fDescriptor);
#endif
    fName.insert(0, medium == kMapped ? "mmap:" : "");
  }
  Held(Held&&) = delete;
  ~Held()
  {
    delete[] fBlock;
#ifndef _WIN32
    if (fDescriptor >= 0)
      close(fDescriptor);
#endif
  }

  const char* name() const
  {
    return fName.c_str();
  }

  /// What is in the block or the file.
  std::string contents() const
  {
    if (fBlock)
      return {fBlock, fSize};
#ifdef _WIN32
    return fFolder.read("file");
#else
    std::string all(std::size_t(lseek(fDescriptor, 0, SEEK_END)), '\0');
    REQUIRE(pread(fDescriptor, all.data(), all.size(), 0) == ssize_t(all.size()));
    return all;
#endif
  }

private:
  char* fBlock = nullptr;
  std::size_t fSize;
  std::string fName;
#ifdef _WIN32
  Scratch fFolder;
#else
  int fDescriptor = -1;
#endif
};
