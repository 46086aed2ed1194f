#include "Foundation/Platform/Thread.h"

#include <pthread.h>

namespace Platform {

namespace {

void (*gEnd)();

// A key's destructor, since thread_local objects end the process when they are registered without memory. It goes with
// the library.
struct Key
{
  explicit Key(void (*end)())
  {
    gEnd = end;
    isMade = pthread_key_create(&key, [](void*) { gEnd(); }) == 0;
  }
  ~Key()
  {
    if (isMade)
      pthread_key_delete(key);
  }

  pthread_key_t key;
  bool isMade;
};

} // namespace

bool callAtThreadEnd(void (*end)()) noexcept
{
  static const Key key(end);
  return key.isMade && pthread_setspecific(key.key, &gEnd) == 0;
}

} // namespace Platform
