#include "Foundation/Debug/TerrorHandler.h"

#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/String/Tstring.h"

#include <utility>

namespace {

TerrorHandler* gInstalled = nullptr;

} // namespace

TerrorHandlerImplementation::~TerrorHandlerImplementation() = default;

TconsoleErrorLog::TconsoleErrorLog()
  : TconsoleErrorLog(TdebugOutput::sCerr())
{
}

TconsoleErrorLog::TconsoleErrorLog(TdebugOutput& output)
  : fOutput(output)
{
}

void TconsoleErrorLog::reportWarning(const Tstring* message, const Tstring* detail)
{
  if (!fLogging)
    return;
  fOutput.print("Warning: %s\n", message ? message->asC() : "");
  fOutput.printDetail(detail ? detail->asC() : nullptr);
}

void TconsoleErrorLog::reportError(const Tstring* message, const Tstring* detail)
{
  if (!fLogging)
    return;
  fOutput.printError("%s%s", message ? message->asC() : "", detail ? ":" : "");
  fOutput.printDetail(detail ? detail->asC() : nullptr);
}

unsigned char TconsoleErrorLog::setLogging(unsigned char on)
{
  return std::exchange(fLogging, (unsigned char)(on != 0));
}

TerrorHandler::TerrorHandler() noexcept
{
  gInstalled = this;
}

TerrorHandler::~TerrorHandler()
{
  if (gInstalled == this)
    gInstalled = nullptr;
}

TerrorHandler* TerrorHandler::sInstalled() noexcept
{
  return gInstalled;
}

TerrorHandlerImplementation* TerrorHandler::setImplementation(TerrorHandlerImplementation* implementation) noexcept
{
  return std::exchange(fImplementation, implementation);
}

void TerrorHandler::reportError(const Tstring& message)
{
  if (fImplementation)
    fImplementation->reportError(&message, nullptr);
}

void TerrorHandler::reportWarning(const Tstring& message)
{
  if (fImplementation)
    fImplementation->reportWarning(&message, nullptr);
}

unsigned char TerrorHandler::setLogging(unsigned char on)
{
  return fImplementation ? fImplementation->setLogging(on) : 0;
}
