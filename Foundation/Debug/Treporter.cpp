#include "Foundation/Debug/Treporter.h"

#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/String/Tstring.h"

#include <cstdio>

namespace {

const char* textOf(const Tstring* text)
{
  return text ? text->asC() : "";
}

Treporter::response printLow(const char* mark, const Tstring* message, const Tstring* detail)
{
  std::fprintf(stderr, "%s%s%s%s\n", mark, textOf(detail), detail ? ": " : "", textOf(message));
  std::fflush(stderr);
  return Treporter::kStop;
}

} // namespace

Treporter::~Treporter() = default;

TdebugReporter::TdebugReporter(TdebugOutput& output, Tstring* title)
  : fOutput(output)
  , fTitle(title)
{
}

Treporter::response TdebugReporter::reportMsg(Tstring* message, Tstring* detail)
{
  fOutput.print("%s%s%s\n", textOf(fTitle), fTitle ? ": " : "", textOf(message));
  fOutput.printDetail(detail ? detail->asC() : nullptr);
  return kStop;
}

Treporter::response TdebugReporter::reportErrorMsg(Tstring* message, Tstring* detail)
{
  fOutput.printError("%s%s%s%s", textOf(fTitle), fTitle ? ": " : "", textOf(message), detail ? ":" : "");
  fOutput.printDetail(detail ? detail->asC() : nullptr);
  return kStop;
}

Treporter::response TlowLevelReporter::reportMsg(Tstring* message, Tstring* detail)
{
  return printLow("", message, detail);
}

Treporter::response TlowLevelReporter::reportErrorMsg(Tstring* message, Tstring* detail)
{
  return printLow("*** ERROR *** ", message, detail);
}
