#include "Foundation/Debug/TassertAlert.h"
#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/TerrorHandler.h"
#include "Foundation/Debug/Treporter.h"
#include "Foundation/String/Tstring.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

int gAfterCalls = 0;
const auto countAfter = [] { ++gAfterCalls; };

struct Listener : Treporter
{
  Listener() { TassertAlert::setReporter(this); }
  ~Listener() override { TassertAlert::setReporter(nullptr); }
  response reportMsg(Tstring* message, Tstring* detail) override
  {
    ++asked;
    text = *message + "@" + *detail;
    return answer;
  }
  response reportErrorMsg(Tstring*, Tstring*) override { return kStop; }

  response answer = kStop;
  int asked = 0;
  Tstring text;
};

TEST(TassertAlert, AsksTheReporterBeforeItCallsAfter)
{
  Listener listener;
  gAfterCalls = 0;
  TassertAlert(TassertAlert::kPostcondition, "sorted", "Mesh.cpp", 12, countAfter);
  EXPECT_STREQ(listener.text.asC(), "Post-condition failed: sorted@File: Mesh.cpp Line: 12");
  EXPECT_EQ(gAfterCalls, 1);
  TassertAlert(TassertAlert::kNotImplemented, nullptr, nullptr, -1); // nothing to call
  EXPECT_STREQ(listener.text.asC(), "Feature not implemented: @File:  Line: -1");
  listener.answer = Treporter::kContinue;
  TassertAlert("Mesh.cpp", 12, "no edges", countAfter);
  EXPECT_EQ(gAfterCalls, 1);
  for (const unsigned length : {250u, 251u, 300u})
  {
    const std::string text(length, 't');
    TassertAlert::display("Kind", text.c_str(), "a", 1, nullptr);
    EXPECT_EQ(listener.text.index('@'), 256);
    TassertAlert::display(text.c_str(), "a", 1, nullptr); // only with a kind
    EXPECT_EQ(listener.text.index('@'), int(length));
  }
}

TEST(TassertAlert, IsNeverSilent)
{
  testing::internal::CaptureStderr();
  TassertAlert::display("Error", "bad", "a", 7, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "File: a Line: 7: Error: bad\n");
#if FAILING_MEMORY
  Listener listener;
  listener.answer = Treporter::kContinue;
  int runs = 0;
  gAfterCalls = 0;
  testing::internal::CaptureStderr();
  forEachFailingAllocation([&] {
    TassertAlert("Mesh.cpp", 12, "no edges", countAfter);
    ++runs;
  });
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("File: Mesh.cpp Line: 12: no edges\n"), 0u);
  EXPECT_GT(gAfterCalls, 0);
  EXPECT_EQ(listener.asked + gAfterCalls, runs);
#endif
}

TEST(TerrorHandler, ReportsAsReportersDoAndHasNoStack)
{
  std::ostringstream text;
  TdebugOutput out(text);
  TconsoleErrorLog log(out);
  Tstring title("Mesh"), detail("in weld");
  const TerrorHandler outer;
  {
    TerrorHandler inner;
    inner.reportError("swallowed");
    inner.setImplementation(&log);
    TerrorHandler::sInstalled()->reportError("no disk");
    TdebugReporter(out, &title).reportErrorMsg(&title, &detail);
  }
  EXPECT_EQ(TerrorHandler::sInstalled(), nullptr);
  EXPECT_EQ(text.str(), "*** ERROR *** no disk\n*** ERROR *** Mesh: Mesh:\n   in weld\n");
}

} // namespace
