// Apart from the allocator, which stands below the arrays.

#include "Foundation/Container/StringArrays.h"
#include "Foundation/Memory/BlockStatistics.h"
#include "Foundation/Memory/TmallocAllocator.h"

void TmallocAllocator::getStatistics(TstringArray& lines)
{
  forEachStatistic([&lines](const char* amount, const char* name) {
    Tstring line(amount);
    line.append(name);
    line.append("\n");
    lines.addLast(line);
  });
}
