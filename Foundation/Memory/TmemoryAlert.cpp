#include "Foundation/Memory/TmemoryAlert.h"

#include "Foundation/Debug/Treporter.h"

void TmemoryAlert::setReporter(Treporter* reporter) noexcept
{
  fReporter = reporter;
}

void TmemoryAlert::setSuppressAlertTrigger(unsigned char flag) noexcept
{
  fSuppress = flag;
  fShown = 0;
}

void TmemoryAlert::showAlert()
{
  if (!fReporter || fShown)
    return;
  fReporter->reportMsg(nullptr, nullptr);
  fShown = fSuppress;
}
