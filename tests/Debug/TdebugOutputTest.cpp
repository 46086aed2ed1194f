#include "Foundation/Debug/TdebugOutputFile.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

// Takes up to 2000 bytes without an allocation; '|' is a flush.
struct Window : CDumpContext
{
  Window() { text.reserve(2000); }
  CDumpContext& operator<<(const char* piece) override
  {
    text += piece;
    return *this;
  }
  void Flush() override { text += '|'; }
  std::string take() { return std::exchange(text, {}); }
  std::string text;
};

TEST(TdebugOutput, Indents)
{
  Window window;
  TdebugOutput out(window, 1);
  out.print("a");
  out.printNoIndent(" b");
  out.skipNextIndent();
  out.printNoIndent(" c"); // leaves the wish for what follows
  out.print(" d\n");
  out.beginSection("%s %d", "outer", 1);
  out.setUseIndent(0);
  out.print("e\n");
  out.beginSection("inner");
  out.setUseIndent(1);
  out.printError("code %d", 3);
  out.endSection();
  out.endSection();
  std::string text = window.take();
  text.erase(std::remove(text.begin(), text.end(), '|'), text.end());
  EXPECT_EQ(text, "   a b c d\n   outer 1\n   {\ne\ninner\n{\n         *** ERROR *** code 3\n      }\n   }\n");

  for (const int level : {-3, 0, 1, 10, 11, INT_MAX})
  {
    out.setIndentAbsolute(level);
    out.setIndent(2);
    out.setIndent(-2);
    out.print("%d\n", 7);
    EXPECT_EQ(window.take(), std::string(std::size_t(std::clamp(level, 0, 10)) * 3, ' ') + "7\n|") << level;
  }
}

TEST(TdebugOutput, CutsNoLine)
{
  Window window;
  TdebugOutput out(window, 1);
  for (const std::size_t length : {0u, 10u, 76u, 77u, 507u, 508u, 509u, 511u, 512u, 100000u})
  {
    const std::string text(length, 'x'), piece(length < 78 ? 39 - (length / 2 + 1) : 0, '=');
    out.print("%s!", text.c_str());
    out.printMark(text.c_str());
    std::ostringstream expected;
    expected << "   " << text << "!|   " << piece << ' ' << text << ' ' << piece << "\n|";
    EXPECT_EQ(window.take(), expected.str()) << length;
  }
#if FAILING_MEMORY
  const std::string text(100000, 'x');
  Window small;
  TdebugOutput dump(small);
  failAllocations(0, 1);
  dump.print("%s", text.c_str());
  failAllocations(0, 0);
  EXPECT_EQ(small.text, std::string(511, 'x') + '|');
#endif
}

TEST(TdebugOutputFile, OpensLateTriesAgainAndAppends)
{
  const Scratch scratch;
  const std::string name = scratch.path("later/log.txt");
  TdebugOutputFile out(name.c_str());
  EXPECT_EQ(out.open(), 0);
  out.print("lost");
  out.close(); // was never open: does not make the next opening append
  std::filesystem::create_directory(scratch.path("later"));
  scratch.write("later/log.txt", "before");
  out.reportString(nullptr); // is no output
  EXPECT_EQ(scratch.read("later/log.txt"), "before");
  out.print("first");
  EXPECT_EQ(scratch.read("later/log.txt"), "first"); // flushed
  out.close();
  out.print(", second");
  EXPECT_EQ(scratch.read("later/log.txt"), "first, second");
}

} // namespace
