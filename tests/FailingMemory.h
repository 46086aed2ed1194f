/// \file
/// Lets allocations of the whole program fail. FAILING_MEMORY is 0 where malloc is not the tests' to replace: on
/// Windows, and under AddressSanitizer, which has its own.

#pragma once

#include "Foundation/Platform/Sanitizer.h"

#include <climits>
#include <initializer_list>

#if defined(_WIN32) || defined(FOUNDATION_ASAN)
#  define FAILING_MEMORY 0
#else
#  define FAILING_MEMORY 1

/// Lets \p times allocations, whole pages among them, fail, behind the next \p after. 0 times lets all succeed.
void failAllocations(int after, int times);

/// What is opened in the place of /proc/meminfo unless it is null, and what is added to the time since the system
/// began.
extern const char* gMemoryInformation;
extern int gSecondsAhead;

/// How many failed since.
int failedAllocations();

/// Runs \p scenario with its first allocation failing, then with its second, and so on until none is left to fail:
/// once for one failure, once for all from there on. Returns how many runs had a failure.
template <class Scenario>
int forEachFailingAllocation(Scenario scenario)
{
  int runs = 0;
  for (const int times : {1, INT_MAX})
  {
    for (int after = 0, failed = 1; failed != 0; ++after)
    {
      failAllocations(after, times);
      scenario();
      failed = failedAllocations();
      failAllocations(0, 0);
      runs += failed != 0;
    }
  }
  return runs;
}
#endif
