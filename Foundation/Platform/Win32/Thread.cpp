#include "Foundation/Platform/Thread.h"

namespace Platform {

bool callAtThreadEnd(void (*)()) noexcept
{
  return false;
}

} // namespace Platform
