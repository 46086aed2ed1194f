// closing LIBRARY LIBRARY: loads the library and the one of ending.cpp, in the order in which the first one ends before
// the other. The status is 0 if g_bClosing is 0 until then, and set when ending.cpp looks.
#include <initializer_list>

#ifdef _WIN32
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

namespace {

#ifdef _WIN32
void* find(const char* library, const char* name)
{
  return reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(library), name));
}
#else
void* find(const char* library, const char* name)
{
  return dlsym(dlopen(library, RTLD_NOW), name);
}
#endif

} // namespace

int main(int, char** libraries)
{
  const int* closing = nullptr;
  const int** watched = nullptr;
  for (const int i : {1, 2})
  {
    if (void* found = find(libraries[i], "g_bClosing"))
      closing = static_cast<int*>(found);
    else
      watched = static_cast<const int**>(find(libraries[i], "gWatched"));
  }
  if (!closing || !watched || *closing)
    return 2;
  *watched = closing;
  return 3;
}
