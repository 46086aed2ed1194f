#include "Foundation/Platform/Closing.h"

int g_bClosing = 0;

namespace {

[[gnu::destructor]] void detach()
{
  g_bClosing = 1;
}

} // namespace
