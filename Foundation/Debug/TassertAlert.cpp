#include "Foundation/Debug/TassertAlert.h"

#include "Foundation/Debug/Treporter.h"
#include "Foundation/String/Tstring.h"

#include <cstdio>
#include <iterator>
#include <utility>

namespace {

constexpr const char* kKindTexts[] = {
  "Assertion failed",
  "Pre-condition failed",
  "Post-condition failed",
  "create() called too many times",
  "create() not called",
  "Invalid case value",
  "Unreachable else case",
  "Memory manager problem",
  "Error",
  "Warning",
  "Feature not implemented",
};
static_assert(std::size(kKindTexts) == TassertAlert::kNotImplemented + 1);

Treporter* gReporter = nullptr;

// Whether the reporter could be asked, with the answer.
bool ask(const char* message, const char* file, int line, Treporter::response& answer)
{
  Tstring text(message);
  Tstring location;
  Tstring::format(&location, "File: %s Line: %d", file, line);
  if ((text.empty() && message[0]) || location.empty()) // no memory
    return false;
  answer = gReporter->reportMsg(&text, &location);
  return true;
}

} // namespace

TassertAlert::TassertAlert(const char* file, int line, const char* message, void (*after)())
{
  display(message, file, line, after);
}

TassertAlert::TassertAlert(kind what, const char* message, const char* file, int line, void (*after)())
{
  display(kindText(what), message, file, line, after);
}

void TassertAlert::display(const char* kind, const char* text, const char* file, int line, void (*after)())
{
  char message[kMessageLength + 1];
  std::snprintf(message, sizeof message, "%s: %s", kind ? kind : "", text ? text : "");
  display(message, file, line, after);
}

void TassertAlert::display(const char* message, const char* file, int line, void (*after)())
{
  message = message ? message : "";
  file = file ? file : "";
  Treporter::response answer = Treporter::kStop;
  if (!gReporter || !ask(message, file, line, answer))
  {
    std::fprintf(stderr, "File: %s Line: %d: %s\n", file, line, message);
    std::fflush(stderr);
  }
  if (answer != Treporter::kContinue && after)
    after();
}

const char* TassertAlert::kindText(kind what)
{
  return unsigned(what) < std::size(kKindTexts) ? kKindTexts[what] : "Error";
}

Treporter* TassertAlert::setReporter(Treporter* reporter)
{
  return std::exchange(gReporter, reporter);
}
