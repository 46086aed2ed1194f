#include "Foundation/Debug/TstackTrace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>

namespace {

struct Trace
{
  int result = 0;
  std::string text;
};
Trace gTrace;

void setVariable(const char* assignment)
{
#ifdef _WIN32
  _putenv(assignment);
#else
  putenv(const_cast<char*>(assignment));
#endif
}

// Each level writes to this behind its call, which is then no tail call.
volatile int gSink = 0;

[[gnu::noinline]] int traceHere(int skip)
{
  std::FILE* file = std::tmpfile();
  gTrace.result = TstackTrace::print(file, skip);
  gTrace.text.assign(std::size_t(std::ftell(file)), '\0');
  std::rewind(file);
  if (std::fread(gTrace.text.data(), 1, gTrace.text.size(), file) != gTrace.text.size())
    ADD_FAILURE() << "cannot read the trace back";
  return std::fclose(file);
}

bool contains(const std::string& text, const std::string& piece)
{
  return text.find(piece) != std::string::npos;
}

struct TstackCaller
{
  [[gnu::noinline]] static void weld(double, int skip) { gSink = traceHere(skip); }
  [[gnu::noinline]] static void recurse(int depth)
  {
    depth == 0 ? weld(0, 0) : recurse(depth - 1);
    gSink = depth;
  }
};

void onSignal(int)
{
  gSink = traceHere(0);
}

std::string line(int number)
{
  const std::string start = '#' + std::to_string(number) + ' ';
  const std::size_t at = gTrace.text.find(start);
  return at == std::string::npos ? "" : gTrace.text.substr(at, gTrace.text.find('\n', at) - at);
}

TEST(TstackTrace, NamesFunctionsFilesAndLines)
{
  for (const int skip : {0, 1})
  {
    TstackCaller::weld(1, skip);
    EXPECT_EQ(gTrace.result, std::count(gTrace.text.begin(), gTrace.text.end(), '\n'));
    EXPECT_GE(gTrace.result, 4);
    const std::string caller = line(1 - skip);
    EXPECT_TRUE(contains(caller, "weld(double") && contains(caller, "TstackTraceTest.cpp:")) << gTrace.text;
    EXPECT_EQ(contains(line(0), "traceHere"), skip == 0) << gTrace.text;
  }
  TstackCaller::weld(1, 1000000);
  EXPECT_EQ(gTrace.result, 0);
  EXPECT_EQ(gTrace.text, "");
}

TEST(TstackTrace, LimitsADeepStack)
{
  TstackCaller::recurse(5000);
  EXPECT_GE(gTrace.result, int(TstackTrace::kMostFrames));
  EXPECT_TRUE(contains(line(0), "traceHere") && contains(line(TstackTrace::kMostFrames - 1), "recurse"));
}

TEST(TstackTrace, WorksInASignalHandler)
{
  gTrace = {};
  std::signal(SIGSEGV, onSignal);
  std::raise(SIGSEGV);
  std::signal(SIGSEGV, SIG_DFL);
  EXPECT_TRUE(contains(line(1), "onSignal")) << gTrace.text;
#ifdef __linux__ // elsewhere the runtime's frames in between have no table to unwind by
  EXPECT_TRUE(contains(gTrace.text, "WorksInASignalHandler")) << gTrace.text;
#endif
}

TEST(TstackTrace, IsSilentWhereAsked)
{
  EXPECT_EQ(TstackTrace::print(nullptr), 0);
  setVariable("VEXA_NO_STACK_TRACE=1");
  traceHere(0);
#ifdef _WIN32
  setVariable("VEXA_NO_STACK_TRACE=");
#else
  unsetenv("VEXA_NO_STACK_TRACE");
#endif
  EXPECT_EQ(gTrace.result, 0);
  EXPECT_EQ(gTrace.text, "");
  EXPECT_EQ(TstackTrace::gprofDisabled(), 0);
  TstackTrace::gprofEnable(0);
  EXPECT_EQ(TstackTrace::gprofDisabled(), 1);
  TstackTrace::gprofEnable(5);
  EXPECT_EQ(TstackTrace::gprofDisabled(), 0);
}

} // namespace
