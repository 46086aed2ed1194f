#include "Foundation/Memory/TresourceQuery.h"

#include "Foundation/Platform/Memory.h"

TuInt64 TresourceQuery::freeMemory() noexcept
{
  return Platform::systemMemory().freePhysical;
}

TuInt64 TresourceQuery::freeSwap() noexcept
{
  return Platform::systemMemory().freeSwap;
}

TuInt64 TresourceQuery::maximumSwap() noexcept
{
  return Platform::systemMemory().maximumSwap;
}

TuInt64 TresourceQuery::logicalSwap() noexcept
{
  return Platform::systemMemory().logicalSwap;
}

TuInt64 TresourceQuery::heapSize() noexcept
{
  return Platform::processMemory().heapSize;
}

TuInt64 TresourceQuery::maxResidentSize() noexcept
{
  return Platform::processMemory().maxResident;
}

TuInt64 TresourceQuery::pageFaults() noexcept
{
  return Platform::processMemory().pageFaults;
}

TuInt64 TresourceQuery::tickCount() noexcept
{
  return Platform::tickCount();
}
