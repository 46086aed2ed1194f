/// \file
/// Lets the library's requests to the system fail on Linux, where it finds the functions of the test program first.
/// AddressSanitizer has allocation functions of its own: nothing fails there.

#pragma once

#if !defined(_WIN32) && !defined(__SANITIZE_ADDRESS__)
#  define CAN_REFUSE_MEMORY
#endif

#ifdef CAN_REFUSE_MEMORY

/// Asked by malloc, calloc, realloc, mmap and mremap whether to fail. Null: they never do.
extern bool (*gRefusesMemory)();

/// What is opened in the place of /proc/meminfo. Null: itself.
extern const char* gMemoryInformation;

/// Added to the time since the system began.
extern int gSecondsAhead;

/// While one lives, allocation number \p first, counted from 0, fails, and with \p onwards every later one too.
class Shortage
{
public:
  Shortage(int first, bool onwards);
  ~Shortage();
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;

  /// How many have failed.
  static int struck();
};

/// Runs \p scenario while every single allocation in it fails in turn, once and then from there on. The scenario makes
/// a Shortage of its arguments where allocations are to fail and returns struck() at its end.
template <class Scenario>
void failEveryAllocation(Scenario scenario)
{
  for (const bool onwards : {false, true})
  {
    for (int first = 0; scenario(first, onwards) > 0; ++first)
    {
    }
  }
}

#endif
