// Two threads with objects of their own: what docs/threads.md allows, for ThreadSanitizer and every other build.
#include "Foundation/Foundation.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

struct Work
{
  Tstring given;
  TthreadArena* arena;
  TfixedArena* fixed;
  std::size_t sum = 0;

  void run()
  {
    TdoubleArray numbers(4);
    TstringArray names(4);
    std::vector<void*> blocks;
    for (int i = 0; i < 2000; ++i)
    {
      Tstring text(given.asC());
      text += std::to_string(i).c_str();
      names.addLast(text);
      numbers.addLast(i);
      blocks.push_back(arena->allocate(unsigned(i % 100) + 1));
      TheapArena::deallocate(fixed->allocate());
      Tdata tuple(new Tdata2Double(i, 1)), other = tuple;
      tuple *= 2;
      sum += text.hash() + names.length() + numbers.length() + (tuple.letterAs<TdataCompound>() && other == tuple);
    }
    for (void* block : blocks)
      TheapArena::deallocate(block);
    try
    {
      throw TfailedException(long(sum % 100));
    }
    catch (const Texception& caught)
    {
      sum += std::string(caught.what()).size();
    }
    given = Tstring();
  }
};

TEST(Threads, workAtOnceWithObjectsOfTheirOwn)
{
  struct Pages : Tallocator
  {
    void* allocate(unsigned int size, const char*) override { return ::operator new(size); }
    void free(void* page, unsigned int) override { ::operator delete(page); }
  } pages;
  std::vector<TfixedArena*> arenas;
  std::vector<Work> works;
  for (long i = 0; i < 2; ++i)
  {
    arenas.push_back(new TfixedArena(24, 100, pages, "test"));
    works.push_back({Tstring("given"), TthreadArena::open(i, "test"), arenas.back()});
  }
  Tdata asked(new Tdata2Double(1, 2)); // so that the records know their kin
  asked *= 2;
  EXPECT_TRUE(asked.letterAs<TdataCompound>());
  {
    std::thread first(&Work::run, works.data()), second(&Work::run, works.data() + 1);
    first.join();
    second.join();
  }
  EXPECT_EQ(works[0].sum, works[1].sum);
  for (long i = 0; i < 2; ++i)
  {
    EXPECT_EQ(works[std::size_t(i)].arena->checkConsistency(), 0);
    TthreadArena::close(i);
    delete arenas[std::size_t(i)];
  }
}

} // namespace
