#include "Foundation/Debug/TstackTrace.h"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>

namespace {

#ifdef _WIN32
constexpr char kWeld[] = "weld";
#else
constexpr char kWeld[] = "TstackCaller::weld(double";
#endif

std::string gTrace;
int gResult = 0;
volatile int gSink = 0; // written behind a call, which is then no tail call

[[gnu::noinline]] void traceHere(int skip)
{
  std::FILE* file = std::tmpfile();
  gResult = TstackTrace::print(file, skip);
  gTrace.assign(std::size_t(std::ftell(file)), '\0');
  std::rewind(file);
  gSink = int(std::fread(gTrace.data(), 1, gTrace.size(), file));
  std::fclose(file);
}

struct TstackCaller
{
  [[gnu::noinline]] static void weld(double depth, int skip)
  {
    depth < 1 ? traceHere(skip) : weld(depth - 1, skip);
    gSink = skip;
  }
};

bool lineContains(int number, const std::string& piece)
{
  const std::size_t at = gTrace.find('#' + std::to_string(number) + ' ');
  return at != std::string::npos && gTrace.substr(at, gTrace.find('\n', at) - at).find(piece) != std::string::npos;
}

TEST(TstackTrace, NamesFunctionsFilesAndLines)
{
  for (const int skip : {0, 1})
  {
    TstackCaller::weld(0, skip);
    EXPECT_EQ(gResult, std::count(gTrace.begin(), gTrace.end(), '\n'));
    EXPECT_TRUE(lineContains(1 - skip, kWeld) && lineContains(1 - skip, "TstackTraceTest.cpp:")) << gTrace;
    EXPECT_EQ(lineContains(0, "traceHere"), skip == 0) << gTrace;
  }
  EXPECT_EQ(TstackTrace::print(stderr, INT_MAX), 0);
  TstackCaller::weld(5000, 0);
  EXPECT_TRUE(lineContains(0, "traceHere") && lineContains(TstackTrace::kMostFrames - 1, kWeld));
}

TEST(TstackTrace, WorksInASignalHandler)
{
  std::signal(SIGSEGV, [](int) { TstackCaller::weld(0, 0); });
  std::raise(SIGSEGV);
  std::signal(SIGSEGV, SIG_DFL);
  EXPECT_TRUE(lineContains(1, kWeld)) << gTrace;
#ifdef __linux__ // elsewhere the runtime's frames in between have no table to unwind by
  EXPECT_NE(gTrace.find("WorksInASignalHandler_Test::TestBody"), std::string::npos) << gTrace;
#endif
}

} // namespace
