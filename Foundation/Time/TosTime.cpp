#include "Foundation/Time/TosTime.h"

#include "Foundation/Platform/Memory.h"

#include <ostream>

TosTime TosTime::now() noexcept
{
  return TuInt32(Platform::tickCount());
}

std::ostream& operator<<(std::ostream& out, const TosTime& time)
{
  return out << time.ticks() << " ms";
}
