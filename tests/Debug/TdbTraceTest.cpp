#include "Foundation/Debug/TdbTrace.h"

#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/Texception.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

void setKeywords(const char* keywords)
{
#ifdef _WIN32
  _putenv_s("VEXA_DEBUG_KEYWORDS", keywords);
#else
  setenv("VEXA_DEBUG_KEYWORDS", keywords, 1);
#endif
}

// The levels of the channels that match, in order.
std::vector<int> levels(short level, TdbTrace::Key key)
{
  TdbTraceArray found;
  const long count = TdbTrace::sGetMatches(found, level, key);
  EXPECT_EQ(count, long(found.length()));
  std::vector<int> result;
  for (const TdbTrace* channel : found)
    result.push_back(channel->level());
  return result;
}

// What is printed to standard output meanwhile.
template <class Action>
std::string printed(Action action)
{
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

// An output that tells when it is deleted.
struct Watched : TdebugOutput
{
  explicit Watched(int& deleted)
    : fDeleted(deleted)
  {
  }
  ~Watched() override { ++fDeleted; }
  int& fDeleted;
};

class TdbTraceTest : public testing::Test
{
protected:
  std::ostringstream fText;
  TdebugOutput fOutput{fText};
  TdbTrace fMesh{5, "mesh", &fOutput, 0}, fArena{6, Tstring("arena"), nullptr, 0}, fZero{0, "mesh", nullptr, 0};
};

TEST_F(TdbTraceTest, MatchesByLevelAndKey)
{
  using Levels = std::vector<int>;
  const struct
  {
    short level;
    const char* key;
    Levels expected;
  } cases[] = {
    {0, "", {5, 6, 0}},     {0, nullptr, {5, 6, 0}}, {-1, "", {5, 6, 0}}, {5, "", {5, 0}}, {4, "", {0}},
    {32767, "", {5, 6, 0}}, {0, "mesh", {5, 0}},     {1, "mesh", {0}},    {0, "mes", {}},  {5, "arena", {}},
  };
  for (const auto& expected : cases)
  {
    EXPECT_EQ(levels(expected.level, expected.key), expected.expected) << expected.level;
    EXPECT_EQ(levels(expected.level, Tstring(expected.key)), expected.expected) << expected.level;
  }
  {
    const TdbTrace fleeting(-2, "mesh", nullptr, 0);
    EXPECT_EQ(levels(1, "mesh"), (Levels{0, -2}));
  }
  EXPECT_EQ(levels(1, "mesh"), Levels{0});
  fArena.setKey("mesh");
  fArena.setLevel(1);
  EXPECT_EQ(levels(1, "mesh"), (Levels{1, 0}));
}

TEST_F(TdbTraceTest, OrdersByUnsignedKeyThenLevel)
{
  const TdbTrace high(1, "\xE4", nullptr, 0), copy(6, "arena", nullptr, 0);
  EXPECT_TRUE(fArena < fZero && fZero < fMesh && fMesh < high && high > fMesh && fMesh >= fZero && fZero <= fMesh);
  EXPECT_TRUE(copy == fArena && copy <= fArena && !(copy < fArena) && fMesh != fZero);
}

TEST_F(TdbTraceTest, SwitchesAndLists)
{
  EXPECT_EQ(printed([] { EXPECT_EQ(TdbTrace::sSetStatus(5, "mesh", 7), 2); }),
            "Changed status of 5 mesh from FALSE to TRUE\nChanged status of 0 mesh from FALSE to TRUE\n");
  EXPECT_EQ(fMesh.status(), 1);
  EXPECT_EQ(fMesh.on(), 0);
  EXPECT_EQ(printed([] { EXPECT_EQ(TdbTrace::sSetStatus(0, "mesh", 1), 2); }), "");
  EXPECT_EQ(printed([] { TdbTrace::sSetStatus(4, "", 0); }), "Changed status of 0 mesh from TRUE to FALSE\n");
  EXPECT_EQ(printed([] { EXPECT_EQ(TdbTrace::sShowStatus(5, Tstring("mesh"), 1), 2); }),
            "2 trace objects of 3 matching (5, mesh)\nTraces Turned On\n===============\n{\n   5 mesh to stream\n}\n"
            "Traces Turned Off\n================\n{\n   0 mesh to none\n}\n");
}

TEST_F(TdbTraceTest, ChangesOutputsAndMarksThem)
{
  EXPECT_EQ(printed([this] { EXPECT_EQ(TdbTrace::sSetOutput(0, "arena", &fOutput, 0), 1); }),
            "Changed output of 6 arena from none to stream\n");
  EXPECT_EQ(TdbTrace::sShowMark(0, "", "here"), 3);
  EXPECT_EQ(TdbTrace::sPrintMarker(5, "", Tstring("there")), 2);
  const std::string rule(36, '='), mark = rule + " here " + rule + '\n';
  EXPECT_EQ(fText.str(), mark + mark + rule + " there " + rule + '\n');
}

TEST_F(TdbTraceTest, DeletesSharedOutputsOnce)
{
  int first = 0, second = 0;
  auto* output = new Watched(first);
  {
    auto owner = std::make_unique<TdbTrace>(1, "a", output, 1), heir = std::make_unique<TdbTrace>(2, "a", output, 1);
    TdbTrace borrower(3, "a", output, 0);
    owner.reset();
    EXPECT_EQ(first, 0);
    EXPECT_EQ(borrower.output(), output);
    heir->setOutput(output, 1); // its own again
    EXPECT_EQ(first, 0);
    printed([&] { EXPECT_EQ(TdbTrace::sSetOutput(2, "a", new Watched(second), 1), 1); });
    EXPECT_EQ(first, 1);
    EXPECT_EQ(borrower.output(), nullptr);
    EXPECT_EQ(second, 0);
    printed([&] { EXPECT_EQ(TdbTrace::sSetOutput(3, "a", heir->output(), 1), 2); });
    heir.reset();
    EXPECT_EQ(second, 0);
  }
  EXPECT_EQ(second, 1);
  EXPECT_EQ(first, 1);
}

TEST_F(TdbTraceTest, ObeysKeywords)
{
  const struct
  {
    const char* keywords;
    const char* on; // channels afterwards, after none were: m(esh), a(rena), z(ero)
    const char* refused;
  } cases[] = {
    {"", "", ""},
    {" ,, ", "", ""},
    {"on", "maz", ""},
    {"on:5", "mz", ""},
    {"on:5:", "mz", ""},
    {"on::arena", "a", ""},
    {"on,off::mesh", "a", ""},
    {"on:1:mesh  off:0:nothing", "z", ""},
    {"sing,on:0:arena,on:4x,on:99999,On", "a", "sing on:4x on:99999 On "},
    {"%s%n:1 on:", "maz", "%s%n:1 "},
  };
  for (const auto& expected : cases)
  {
    printed([] { TdbTrace::sSetStatus(0, "", 0); });
    setKeywords(expected.keywords);
    testing::internal::CaptureStderr();
    printed([] { TdbTrace::sSignalHandler(); });
    std::string errors;
    std::istringstream words(expected.refused);
    for (std::string word; words >> word;)
      errors += "Unrecognized debug keyword '" + word + "'\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), errors) << expected.keywords;
    const std::string on =
      std::string(fMesh.status() ? "m" : "") + (fArena.status() ? "a" : "") + (fZero.status() ? "z" : "");
    EXPECT_EQ(on, expected.on) << expected.keywords;
  }
  setKeywords("show:6:arena mark:now mark");
  EXPECT_EQ(printed([] { TdbTrace::sSignalHandler(); }).substr(0, 41), "1 trace objects of 3 matching (6, arena)\n");
  const std::string rule(37, '=');
  EXPECT_EQ(fText.str(), rule + " now " + rule + '\n' + std::string(78, '=') + '\n');
}

TEST_F(TdbTraceTest, ObeysASignalAtTheNextSafePoint)
{
#ifdef SIGUSR2
  ASSERT_EQ(TdbTrace::sInstallSignalHandler(), 1);
  setKeywords("on::arena");
  std::raise(SIGUSR2);
  EXPECT_EQ(fArena.status(), 0);
  printed([] { TdbTrace::sSetStatus(0, "mesh", 0); });
  EXPECT_EQ(fArena.status(), 1);
  setKeywords("off");
  printed([] { TdbTrace::sCheckSignal(); });
  EXPECT_EQ(fArena.status(), 1); // one signal counts once
  std::raise(SIGUSR2);
  printed([] { TdbTrace::sCheckSignal(); });
  EXPECT_EQ(fArena.status(), 0);
  std::signal(SIGUSR2, SIG_DFL);
#else
  EXPECT_EQ(TdbTrace::sInstallSignalHandler(), 0);
#endif
}

#if FAILING_MEMORY
TEST_F(TdbTraceTest, LeavesNothingBehindWithoutMemory)
{
  setKeywords("on:1:some-key-or-other-that-is-nobody's");
  testing::internal::CaptureStdout();
  const int failures = forEachFailingAllocation([this] {
    std::vector<std::unique_ptr<TdbTrace>> channels;
    try
    {
      for (int i = 0; i < 40; ++i) // more than the registry has room for
        channels.push_back(std::make_unique<TdbTrace>(short(100), "many", &fOutput, 0));
    }
    catch (const TmemoryException&)
    {
    }
    catch (const std::bad_alloc&)
    {
    }
    TdbTrace::sSignalHandler();
    EXPECT_EQ(TdbTrace::sShowMark(0, "", ""), long(channels.size()) + 3);
  });
  testing::internal::GetCapturedStdout();
  EXPECT_GT(failures, 0);
  EXPECT_EQ(levels(0, ""), (std::vector<int>{5, 6, 0}));
  EXPECT_EQ(fMesh.status() + fArena.status() + fZero.status(), 0); // a key that was lost is not every key
}
#endif

} // namespace
