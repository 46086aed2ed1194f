#include "tests/Environment.h"

#include "Foundation/Debug/TdbTrace.h"
#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/Texception.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <list>
#include <memory>
#include <sstream>

namespace {

// What is printed to standard output meanwhile.
template <class Action>
std::string printed(Action action)
{
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

int gDeleted = 0;

struct Watched : TdebugOutput
{
  ~Watched() override { ++gDeleted; }
  void printMark(const char*) override { onMark(); }
  std::function<void()> onMark;
};

class TdbTraceTest : public testing::Test
{
protected:
  // The initials of the channels that match, or of those that are on.
  static std::string matches(short level, const char* key, bool on = false)
  {
    TdbTraceArray found;
    TdbTrace::sGetMatches(found, level, key);
    std::string result;
    for (const TdbTrace* channel : found)
      result += on && !channel->status() ? "" : channel->level() == 0 ? "z" : std::string(1, channel->key()[0]);
    return result;
  }

  std::ostringstream fText;
  TdebugOutput fOutput{fText};
  TdbTrace fMesh{5, "mesh", &fOutput, 0}, fArena{6, Tstring("arena"), nullptr, 0}, fZero{0, "mesh", nullptr, 0};
};

TEST_F(TdbTraceTest, MatchesAndOrdersByLevelAndKey)
{
  const struct
  {
    short level;
    const char* key;
    const char* expected;
  } cases[] = {{0, "", "maz"}, {0, nullptr, "maz"}, {-1, "", "maz"},  {5, "", "mz"},  {4, "", "z"},
               {6, "", "maz"}, {0, "mesh", "mz"},   {1, "mesh", "z"}, {0, "mes", ""}, {5, "arena", ""}};
  for (const auto& expected : cases)
    EXPECT_EQ(matches(expected.level, expected.key), expected.expected) << expected.level;
  {
    const TdbTrace high(-1, "\xE4", nullptr, 0), copy(6, "arena", nullptr, 0);
    EXPECT_EQ(matches(0, "arena"), "aa");
  }
  EXPECT_EQ(matches(0, ""), "maz");
}

TEST_F(TdbTraceTest, SwitchesListsAndMarks)
{
  EXPECT_EQ(printed([] { EXPECT_EQ(TdbTrace::sSetStatus(5, Tstring("mesh"), 7), 2); }),
            "Changed status of 5 mesh from FALSE to TRUE\nChanged status of 0 mesh from FALSE to TRUE\n");
  EXPECT_TRUE(fMesh.status() && !fMesh.on());
  printed([] { TdbTrace::sSetStatus(4, "", 0); });
  EXPECT_EQ(printed([] { EXPECT_EQ(TdbTrace::sShowStatus(5, "mesh", 1), 2); }),
            "2 trace objects of 3 matching (5, mesh)\nTraces Turned On\n===============\n{\n   5 mesh to stream\n}\n"
            "Traces Turned Off\n================\n{\n   0 mesh to none\n}\n");
  fText.width(200); // left behind by whoever else prints there
  EXPECT_EQ(TdbTrace::sPrintMarker(0, "", Tstring("here")), 3);
  EXPECT_EQ(fText.str(), std::string(36, '=') + " here " + std::string(36, '=') + '\n');
}

TEST_F(TdbTraceTest, DeletesSharedOutputsOnce)
{
  gDeleted = 0;
  auto* output = new Watched;
  auto owner = std::make_unique<TdbTrace>(1, "a", output, 1), heir = std::make_unique<TdbTrace>(2, "a", output, 1);
  TdbTrace borrower(3, "a", output, 0);
  owner.reset();
  heir->setOutput(output, 1); // its own again
  EXPECT_TRUE(gDeleted == 0 && borrower.output() == output);
  EXPECT_EQ(printed([&] { TdbTrace::sSetOutput(2, "a", new Watched, 1); }),
            "Changed output of 2 a from dump context to dump context\n");
  EXPECT_TRUE(gDeleted == 1 && !borrower.output());
  borrower.setOutput(heir->output(), 1);
  heir.reset();
  EXPECT_EQ(gDeleted, 1);
  borrower.setOutput(nullptr, 0);
  EXPECT_EQ(gDeleted, 2);
}

TEST_F(TdbTraceTest, BearsChannelsThatGoMeanwhile)
{
  Watched output;
  auto first = std::make_unique<TdbTrace>(1, "a key", &output, 0);
  TdbTrace second(1, "a key", &output, 0), third(1, "a key", &output, 0);
  output.onMark = [&] { first.reset(), third.setKey("another"); };
  EXPECT_EQ(TdbTrace::sShowMark(0, first->key(), ""), 2);
}

TEST_F(TdbTraceTest, ObeysKeywords)
{
  const struct
  {
    const char* keywords;
    const char* on;
    const char* refused;
  } cases[] = {{" ,, ", "", ""},
               {"on", "maz", ""},
               {"on:5:", "mz", ""},
               {"on::arena,off::mesh", "a", ""},
               {"on:0:arena,on:4x,on:99999,On", "a", "on:4x on:99999 On"},
               {"%s%n:1 on:", "maz", "%s%n:1"}};
  for (const auto& expected : cases)
  {
    printed([] { TdbTrace::sSetStatus(0, "", 0); });
    setVariable("VEXA_DEBUG_KEYWORDS", expected.keywords);
    testing::internal::CaptureStderr();
    printed([] { TdbTrace::sSignalHandler(); });
    std::string errors;
    std::istringstream words(expected.refused);
    for (std::string word; words >> word;)
      errors += "Unrecognized debug keyword '" + word + "'\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), errors) << expected.keywords;
    EXPECT_EQ(matches(0, "", true), expected.on) << expected.keywords;
  }
}

#ifdef SIGUSR2
TEST_F(TdbTraceTest, ObeysASignalOnceAtTheNextSafePoint)
{
  ASSERT_EQ(TdbTrace::sInstallSignalHandler(), 1);
  setVariable("VEXA_DEBUG_KEYWORDS", "on::arena");
  std::raise(SIGUSR2);
  EXPECT_EQ(fArena.status(), 0);
  printed([] { TdbTrace::sSetStatus(0, "mesh", 0); });
  EXPECT_EQ(fArena.status(), 1);
  Watched slow; // so that signals come meanwhile
  int marks = 0;
  slow.onMark = [&] { std::raise(++marks < 100 ? SIGUSR2 : 0); };
  fArena.setOutput(&slow, 0);
  setVariable("VEXA_DEBUG_KEYWORDS", "mark,mark");
  TdbTrace::sCheckSignal();
  EXPECT_EQ(marks, 0);
  slow.onMark();
  TdbTrace::sCheckSignal();
  EXPECT_EQ(marks, 3);
  setVariable("VEXA_DEBUG_KEYWORDS", "");
  TdbTrace::sCheckSignal();
}
#endif

#if FAILING_MEMORY
TEST_F(TdbTraceTest, LeavesNothingBehindWithoutMemory)
{
  setVariable("VEXA_DEBUG_KEYWORDS", "on:1:some-key-or-other-that-is-nobody's");
  const auto scenario = [] {
    std::list<TdbTrace> channels;
    try
    {
      for (int i = 0; i < 40; ++i) // more than the registry has room for
        channels.emplace_back(short(100), "many", nullptr, 0);
    }
    catch (const std::exception&) // TmemoryException, and of the test itself std::bad_alloc
    {
    }
    TdbTrace::sSignalHandler();
    EXPECT_EQ(TdbTrace::sShowMark(0, "", ""), long(channels.size()) + 3);
  };
  EXPECT_GT(forEachFailingAllocation(scenario), 0);
  EXPECT_EQ(matches(0, "") + matches(0, "", true), "maz"); // a key that was lost is not every key
}
#endif

} // namespace
