#include "Foundation/Debug/TassertAlert.h"

#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Debug/TerrorHandler.h"
#include "Foundation/Debug/Treporter.h"
#include "Foundation/String/Tstring.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

int gAfterCalls = 0;

void countAfter()
{
  ++gAfterCalls;
}

// Answers as told and keeps what it was asked.
struct Listener : Treporter
{
  response reportMsg(Tstring* message, Tstring* detail) override
  {
    ++fAsked;
    fMessage = *message;
    fDetail = *detail;
    return fAnswer;
  }
  response reportErrorMsg(Tstring*, Tstring*) override
  {
    ADD_FAILURE() << "an alert uses the message operation";
    return kStop;
  }

  response fAnswer = kStop;
  int fAsked = 0;
  Tstring fMessage, fDetail;
};

class TassertAlertTest : public testing::Test
{
protected:
  TassertAlertTest()
  {
    gAfterCalls = 0;
    TassertAlert::setReporter(&fListener);
  }
  ~TassertAlertTest() override { EXPECT_EQ(TassertAlert::setReporter(nullptr), &fListener); }

  Listener fListener;
};

TEST_F(TassertAlertTest, AsksTheReporterBeforeItCallsAfter)
{
  const struct
  {
    Treporter::response answer;
    int afterCalls;
  } cases[] = {{Treporter::kStop, 1}, {Treporter::kContinue, 0}};
  for (const auto& expected : cases)
  {
    gAfterCalls = 0;
    fListener.fAnswer = expected.answer;
    TassertAlert("Mesh.cpp", 12, "no edges", countAfter);
    TassertAlert("Mesh.cpp", 12, "no edges"); // nothing to call
    EXPECT_EQ(gAfterCalls, expected.afterCalls);
    EXPECT_STREQ(fListener.fMessage.asC(), "no edges");
    EXPECT_STREQ(fListener.fDetail.asC(), "File: Mesh.cpp Line: 12");
  }
  TassertAlert::display(nullptr, nullptr, -1, nullptr);
  EXPECT_STREQ(fListener.fDetail.asC(), "File:  Line: -1");
}

TEST_F(TassertAlertTest, PutsTheKindFirstAndCutsAt256)
{
  TassertAlert(TassertAlert::kPostcondition, "sorted", "a", 1);
  EXPECT_STREQ(fListener.fMessage.asC(), "Post-condition failed: sorted");
  TassertAlert(TassertAlert::kNotImplemented, nullptr, "a", 1);
  EXPECT_STREQ(fListener.fMessage.asC(), "Feature not implemented: ");
  const std::string text(300, 't');
  for (const std::size_t length : {249u, 250u, 251u, 300u})
  {
    TassertAlert::display("Kind", text.substr(0, length).c_str(), "a", 1, nullptr);
    EXPECT_EQ(std::string(fListener.fMessage.asC()), ("Kind: " + text.substr(0, length)).substr(0, 256));
  }
  TassertAlert("a", 1, text.c_str());
  EXPECT_EQ(fListener.fMessage.length(), 300u); // only with a kind
}

TEST_F(TassertAlertTest, WritesToStandardErrorWithoutAReporter)
{
  TassertAlert::setReporter(nullptr);
  const std::string file(3000, 'f');
  testing::internal::CaptureStderr();
  TassertAlert::display("Error", "bad", file.c_str(), 7, countAfter);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "File: " + file + " Line: 7: Error: bad\n");
  EXPECT_EQ(gAfterCalls, 1);
  TassertAlert::setReporter(&fListener);
}

#if FAILING_MEMORY
TEST_F(TassertAlertTest, IsNeverSilentForLackOfMemory)
{
  fListener.fAnswer = Treporter::kContinue;
  int runs = 0, told = 0;
  testing::internal::CaptureStderr();
  const int failures = forEachFailingAllocation([&] {
    const int asked = fListener.fAsked, called = gAfterCalls;
    TassertAlert("Mesh.cpp", 12, "no edges", countAfter);
    ++runs;
    told += fListener.fAsked != asked ? fListener.fDetail == "File: Mesh.cpp Line: 12" : gAfterCalls == called + 1;
  });
  EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, 41), "File: Mesh.cpp Line: 12: no edges\nFile: M");
  EXPECT_GT(failures, 0);
  EXPECT_EQ(told, runs);
}
#endif

TEST(Treporter, PrintsMessagesAndErrors)
{
  std::ostringstream text;
  TdebugOutput out(text, 1);
  Tstring title("Mesh"), message("no edges"), detail("in weld");
  TdebugReporter titled(out, &title), plain(out);
  EXPECT_EQ(titled.reportMsg(&message, &detail), Treporter::kStop);
  EXPECT_EQ(titled.reportErrorMsg(&message, &detail), Treporter::kStop);
  plain.reportMsg(&message, nullptr);
  plain.reportErrorMsg(nullptr, nullptr);
  EXPECT_EQ(text.str(), "   Mesh: no edges\n      in weld\n   *** ERROR *** Mesh: no edges:\n      in weld\n"
                        "   no edges\n   *** ERROR *** \n");

  testing::internal::CaptureStderr();
  TlowLevelReporter low;
  low.reportMsg(&message, &detail);
  low.reportErrorMsg(&message, nullptr);
  low.reportMsg(nullptr, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "in weld: no edges\n*** ERROR *** no edges\n\n");
}

TEST(TerrorHandler, ReportsToTheLastConstructedOne)
{
  EXPECT_EQ(TerrorHandler::sInstalled(), nullptr);
  std::ostringstream text;
  TdebugOutput out(text);
  TconsoleErrorLog log(out);
  {
    TerrorHandler outer;
    {
      TerrorHandler inner;
      EXPECT_EQ(TerrorHandler::sInstalled(), &inner);
      inner.reportError("swallowed");
      inner.reportWarning("swallowed");
      EXPECT_EQ(inner.setLogging(1), 0);
      EXPECT_EQ(inner.setImplementation(&log), nullptr);
      inner.reportError("no disk");
      EXPECT_EQ(inner.setLogging(0), 1);
      inner.reportWarning("off");
      EXPECT_EQ(inner.setLogging(8), 0);
      EXPECT_EQ(inner.setLogging(1), 1);
      inner.reportWarning("slow disk");
    }
    EXPECT_EQ(TerrorHandler::sInstalled(), nullptr); // no stack of handlers
    TerrorHandler last;
    outer.~TerrorHandler();
    EXPECT_EQ(TerrorHandler::sInstalled(), &last);
    new (&outer) TerrorHandler;
  }
  EXPECT_EQ(TerrorHandler::sInstalled(), nullptr);
  const Tstring message("m"), detail("d");
  log.reportError(&message, &detail);
  EXPECT_EQ(text.str(), "*** ERROR *** no disk\nWarning: slow disk\n*** ERROR *** m:\n   d\n");
}

} // namespace
