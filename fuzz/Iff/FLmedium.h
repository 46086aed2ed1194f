/// \file
/// Bytes in one of the media that a chunk file may be in, and the name that opens it. For the fuzzers.

#pragma once

#include "tests/Iff/Chunks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#ifndef _WIN32
#  include <fcntl.h>
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
  Held(Medium medium, const std::string& bytes, [[maybe_unused]] bool reads)
    : fSize(bytes.size())
  {
    if (medium == kBlock)
    {
      fBlock = new char[fSize];
      bytes.copy(fBlock, fSize);
      fName = memoryName(fBlock, fSize);
      return;
    }
    fPath = kFolder.write(std::to_string(medium), medium == kDescriptor ? "abc" + bytes : bytes);
    fName = (medium == kMapped ? "mmap:" : "") + fPath;
#ifndef _WIN32
    if (medium == kFifo && reads)
    {
      int ends[2];
      REQUIRE(pipe2(ends, O_DIRECT) == 0); // each write is read by itself; there is room for 16
      for (std::size_t at = 0, piece = fSize / 16 + 1; at < fSize; at += piece)
        REQUIRE(write(ends[1], bytes.data() + at, std::min(piece, fSize - at)) > 0);
      close(ends[1]);
      fDescriptor = ends[0];
    }
    else if (medium >= kDescriptor)
      REQUIRE((fDescriptor = open(fPath.c_str(), medium == kFifo ? O_WRONLY | O_APPEND : O_RDWR)) >= 0 &&
              (medium == kFifo || lseek(fDescriptor, 3, SEEK_SET) == 3));
    if (fDescriptor >= 0)
      fName = "fd:" + std::to_string(fDescriptor);
#endif
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
    return fBlock ? std::string(fBlock, fSize) : kFolder.read(fPath);
  }

private:
  inline static const Scratch kFolder;

  char* fBlock = nullptr;
  std::size_t fSize;
  std::string fPath, fName;
  int fDescriptor = -1;
};
