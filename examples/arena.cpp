// What each kind of arena is for.
#include "Foundation/Memory/CompactArenas.h"
#include "Foundation/Memory/TcompactArena.h"
#include "Foundation/Memory/TfixedArena.h"
#include "Foundation/Memory/TstackArena.h"
#include "Foundation/Memory/TthreadArena.h"
#include "Foundation/Memory/TvariantArena.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>
#include <thread>

namespace {

struct Edge
{
  int from, to;
  Edge* next;
};

bool fixedSize()
{
  //! [fixed]
  TfixedArena edges(sizeof(Edge), 1000);
  Edge* first = nullptr;
  for (int i = 0; i < 5000; ++i)
  {
    void* room = edges.allocate();
    if (!room)
      return false;
    first = new (room) Edge{i, i + 1, first};
  }
  edges.free(first); // one by one, or all of them with the arena
  //! [fixed]
  return edges.checkConsistency() == 0;
}

bool anySize()
{
  //! [variant]
  TvariantArena texts;
  char* text = static_cast<char*>(texts.allocate(6));
  std::memcpy(text, "Hello", 6);
  text = static_cast<char*>(texts.reallocate(text, 100)); // keeps what is in it
  std::memcpy(text + 5, ", arena", 8);
  TheapArena::deallocate(text); // whichever arena it is of
  //! [variant]
  texts.debug(std::cout);
  return texts.allocatedMemory() == 0 && texts.checkConsistency() == 0;
}

bool inOneGo()
{
  //! [stack]
  TstackArena scratch(65536);
  for (int frame = 0; frame < 24; ++frame)
  {
    double* weights = static_cast<double*>(scratch.allocate(sizeof(double), 1000));
    if (!weights)
      return false;
    weights[0] = frame;
    scratch.reset(); // the next frame finds the same memory
  }
  //! [stack]
  return scratch.footPrint() < 70000;
}

bool withoutHeaders()
{
  //! [compact]
  TcompactArena knots(sizeof(double), 0x40000);
  double* knot = static_cast<double*>(knots.allocate());
  *knot = 0.5;
  const bool released = knots.deallocate(knot) == 1; // 0 would say that it was not of this arena
  TcompactArena::purge();                            // its page goes back
  //! [compact]
  return released && knots.footPrint() == 0 && compactDeallocate8(compactAllocate8()) == 1;
}

bool perThread()
{
  //! [thread]
  TthreadArena* arena = TthreadArena::open(0, "worker");
  if (!arena)
    return false;
  bool done = false;
  std::thread worker([&] {
    void* block = arena->allocate(100);
    TheapArena::deallocate(block);
    done = block != nullptr;
  });
  worker.join();
  arena->close();
  //! [thread]
  return done;
}

} // namespace

int main()
{
  const bool good = fixedSize() && anySize() && inOneGo() && withoutHeaders() && perThread();
  std::puts(good ? "every arena did its work" : "an arena failed");
  return good ? 0 : 1;
}
