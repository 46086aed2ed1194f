#include "Inspection.h"

#include <utility>

Inspection::Inspection(Console& console, std::string name)
  : fConsole(console)
  , fName(std::move(name))
{
}

void Inspection::departure(Severity severity, Tint64 offset, const std::string& message)
{
  const bool isOddity = severity == Severity::kOddity;
  ++(isOddity ? fOddities : fErrors);
  fConsole.complain(fName + ": offset " + std::to_string(offset) + (isOddity ? ": oddity: " : ": error: ") + message);
}
