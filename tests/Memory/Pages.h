// A source of pages that keeps books and can be told to fail.
#pragma once

#include "Foundation/Memory/Tallocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

class Pages : public Tallocator
{
public:
  // The requests from number `first`, counted from 0, on get nothing: one or all of them.
  explicit Pages(int first = -1, bool once = false)
    : fFirst(first)
    , fOnce(once)
  {
  }
  ~Pages() override { EXPECT_TRUE(fHeld.empty()) << "pages not returned"; }

  void* allocate(unsigned int size, const char*) override
  {
    const int number = int(fAsked.size());
    fAsked.push_back(size);
    if (fFirst >= 0 && (fOnce ? number == fFirst : number >= fFirst))
      return nullptr;
    void* page = std::malloc(size);
    fHeld[static_cast<char*>(page)] = size;
    return fLast = page;
  }
  void free(void* page, unsigned int size) override
  {
    EXPECT_EQ(fHeld.at(static_cast<char*>(page)), size);
    fHeld.erase(static_cast<char*>(page));
    std::memset(page, 0xDD, size);
    std::free(page);
  }

  // The sizes asked for since the last call.
  std::vector<unsigned> asked() { return std::exchange(fAsked, {}); }
  bool failed() const { return fFirst >= 0 && int(fAsked.size()) > fFirst; }

  void* fLast = nullptr;
  std::map<char*, unsigned> fHeld;

private:
  const int fFirst;
  const bool fOnce;
  std::vector<unsigned> fAsked;
};

using Sizes = std::vector<unsigned>;

inline char* bytes(void* block)
{
  return static_cast<char*>(block);
}

// A block that knows what should be in it.
struct Filled
{
  unsigned char* start;
  unsigned size;
  unsigned char pattern;

  const Filled& fill() const
  {
    std::fill_n(start, size, pattern);
    return *this;
  }
  bool holds() const { return std::count(start, start + size, pattern) == std::ptrdiff_t(size); }
};
