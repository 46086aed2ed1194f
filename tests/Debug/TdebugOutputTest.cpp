#include "Foundation/Debug/TdebugOutput.h"

#include "Foundation/Debug/TdebugOutputFile.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// A debug output and what it wrote.
struct Recorder : std::ostringstream, TdebugOutput
{
  Recorder() { setTarget(*this, 0); }
  std::string take()
  {
    std::string text = str();
    str("");
    return text;
  }
};

struct Window : CDumpContext
{
  CDumpContext& operator<<(const char* piece) override
  {
    text += piece;
    return *this;
  }
  void Flush() override { text += '|'; }
  std::string text;
};

std::string contents(const std::string& name)
{
  std::ifstream file(name);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(TdebugOutput, IndentsByLevelAndLimit)
{
  const struct
  {
    int level;
    std::size_t spaces;
  } cases[] = {{-3, 0}, {0, 0}, {1, 3}, {10, 30}, {11, 30}, {1000, 30}};
  Recorder out;
  for (const auto& expected : cases)
  {
    out.setIndentAbsolute(expected.level);
    out.print("%d\n", 7);
    EXPECT_EQ(out.take(), std::string(expected.spaces, ' ') + "7\n") << expected.level;
  }
}

TEST(TdebugOutput, LeavesIndentationOutWhereAsked)
{
  Recorder out;
  out.setIndent(2);
  out.setIndent(-1);
  out.print("a");
  out.printNoIndent(" b");
  out.skipNextIndent();
  out.printNoIndent(" c"); // leaves the wish for what follows
  out.print(" d\n");
  out.print("e\n");
  out.setUseIndent(0);
  out.print("f\n");
  out.setIndent(1);
  out.setUseIndent(1);
  out.print("g\n");
  EXPECT_EQ(out.take(), "   a b c d\n   e\nf\n      g\n");
}

TEST(TdebugOutput, NestsSectionsAndErrors)
{
  Recorder out;
  out.beginSection("%s %d", "outer", 1);
  out.beginSection("inner");
  out.printError("code %d", 3);
  out.endSection();
  out.printDetail("why");
  out.printDetail(nullptr);
  out.endSection();
  out.print("end\n");
  EXPECT_EQ(out.take(), "outer 1\n{\n   inner\n   {\n      *** ERROR *** code 3\n   }\n      why\n}\nend\n");
}

TEST(TdebugOutput, KeepsMarksAboutAsWide)
{
  Recorder out;
  const std::size_t lengths[] = {0, 1, 10, 75, 76, 77, 78, 500};
  for (const std::size_t length : lengths)
  {
    const std::string mark(length, 'm');
    const std::string piece(length < 78 ? 39 - (length / 2 + 1) : 0, '=');
    out.printMark(mark.c_str());
    EXPECT_EQ(out.take(), piece + ' ' + mark + ' ' + piece + '\n') << length;
  }
  out.printMark(nullptr);
  EXPECT_EQ(out.take(), std::string(78, '=') + '\n');
}

TEST(TdebugOutput, CutsNoLine)
{
  Recorder out;
  out.setIndent(1);
  for (const std::size_t length : {507u, 508u, 509u, 510u, 511u, 512u, 513u, 100000u})
  {
    const std::string text(length, 'x');
    out.print("%s!", text.c_str());
    EXPECT_EQ(out.take(), "   " + text + '!') << length;
    out.beginSection("%s", text.c_str());
    out.endSection();
    EXPECT_EQ(out.take(), "   " + text + "\n   {\n   }\n") << length;
  }
#if FAILING_MEMORY
  const std::string text(100000, 'x');
  Window window; // takes what comes without memory of its own
  window.text.reserve(2000);
  TdebugOutput dump(window);
  failAllocations(0, 1);
  dump.print("%s", text.c_str());
  failAllocations(0, 0);
  EXPECT_EQ(window.text, std::string(511, 'x') + '|');
#endif
}

TEST(TdebugOutput, MayPrintFromItsOwnOutput)
{
  struct Nested : Recorder
  {
    using TdebugOutput::reportString;
    void reportString(const char* text) override
    {
      if (fDepth++ == 0)
        print("<%s>", text);
      TdebugOutput::reportString(text);
      --fDepth;
    }
    int fDepth = 0;
  };
  Nested out;
  out.print("line %d", 1);
  EXPECT_EQ(out.take(), "<line 1>line 1");
}

TEST(TdebugOutput, WritesToADumpContext)
{
  Window window;
  TdebugOutput out(window, 1);
  out.print("a %s\n", "b");
  EXPECT_EQ(window.text, "   a b\n|");
}

TEST(TdebugOutput, KnowsItsName)
{
  Recorder recorder;
  Window window;
  TdebugOutput dump(window);
  const std::string longName(1000, 'n');
  TdebugOutputFile file(longName.c_str());
  const struct
  {
    TdebugOutput* output;
    std::string name;
  } cases[] = {{&TdebugOutput::sCerr(), "stderr"},
               {&TdebugOutput::sCout(), "stdout"},
               {&recorder, "stream"},
               {&dump, "dump context"},
               {&file, longName.substr(0, TdebugOutput::kNameSize - 1)}};
  for (const auto& expected : cases)
  {
    char name[TdebugOutput::kNameSize + 1];
    name[TdebugOutput::kNameSize] = '#';
    expected.output->getName(name);
    EXPECT_EQ(name, expected.name);
    EXPECT_EQ(name[TdebugOutput::kNameSize], '#');
  }
}

TEST(TdebugOutputFile, OpensLateAndAppendsAfterwards)
{
  const Scratch scratch;
  const std::string name = scratch.write("log.txt", "before");
  {
    TdebugOutputFile out(name.c_str(), 1);
    out.reportString();
    EXPECT_EQ(contents(name), "before");
    out.print("first\n");
    EXPECT_EQ(contents(name), "   first\n"); // flushed, and what was there is gone
    EXPECT_EQ(out.open(), 1);
    out.close();
    out.close();
    out.print("second\n");
    EXPECT_EQ(contents(name), "   first\n   second\n");
  }
  TdebugOutputFile again(name.c_str());
  again.close(); // was never open: does not make the next opening append
  again.print("third\n");
  again.close();
  EXPECT_EQ(contents(name), "third\n");
}

TEST(TdebugOutputFile, TriesAgain)
{
  const Scratch scratch;
  const std::string name = scratch.path("later/log.txt");
  TdebugOutputFile out(name.c_str());
  EXPECT_EQ(out.open(), 0);
  out.print("lost\n");
  std::filesystem::create_directory(scratch.path("later"));
  out.print("kept\n");
  EXPECT_EQ(contents(name), "kept\n");
}

} // namespace
