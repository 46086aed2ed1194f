/// \file
/// Bytes in one of the media that a chunk file may be in, and the name that opens it. For the fuzzers.

#pragma once

#include "Foundation/Iff/FL.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#ifdef _WIN32
#  include <process.h>
#else
#  include <fcntl.h>
#  include <sys/mman.h>
#  include <unistd.h>
#endif

#define REQUIRE(condition)                                                                                             \
  ((condition)                                                                                                         \
     ? void()                                                                                                          \
     : (std::fprintf(stderr, "%s:%d: %s (flerrno %d)\n", __FILE__, __LINE__, #condition, flerrno), std::abort()))

using Bytes = std::vector<unsigned char>;

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
  Held(Medium medium, const Bytes& bytes, bool reads)
    : fSize(bytes.size())
  {
    if (medium == kBlock)
    {
      fBlock = new unsigned char[fSize];
      std::copy(bytes.begin(), bytes.end(), fBlock);
      fName = "mem:" + std::to_string(reinterpret_cast<std::size_t>(fBlock)) + "," + std::to_string(fSize);
      return;
    }
#ifdef _WIN32
    fPath = "fuzz" + std::to_string(_getpid()) + ".tmp";
    std::FILE* file = std::fopen(fPath.c_str(), "wb");
    REQUIRE(file && std::fwrite(bytes.data(), 1, fSize, file) == fSize && std::fclose(file) == 0);
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
    fPath = (medium < kMapped + 1 ? "/proc/self/fd/" : "fd:") + std::to_string(fDescriptor);
#endif
    fName = (medium == kMapped ? "mmap:" : "") + fPath;
  }

  ~Held()
  {
    delete[] fBlock;
#ifdef _WIN32
    std::remove(fPath.c_str());
#else
    if (fDescriptor >= 0)
      close(fDescriptor);
#endif
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  const char* name() const
  {
    return fName.c_str();
  }

  /// What is in the block or the file.
  Bytes contents() const
  {
    if (fBlock)
      return {fBlock, fBlock + fSize};
#ifdef _WIN32
    Bytes all(1 << 20);
    std::FILE* file = std::fopen(fPath.c_str(), "rb");
    all.resize(std::fread(all.data(), 1, all.size(), file));
    std::fclose(file);
#else
    Bytes all(std::size_t(lseek(fDescriptor, 0, SEEK_END)));
    REQUIRE(pread(fDescriptor, all.data(), all.size(), 0) == ssize_t(all.size()));
#endif
    return all;
  }

private:
  unsigned char* fBlock = nullptr;
  std::size_t fSize;
  std::string fName, fPath;
  int fDescriptor = -1;
};
