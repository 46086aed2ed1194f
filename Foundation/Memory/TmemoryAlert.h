/// \file
/// TmemoryAlert: tells the user that memory is low, once if wished.

#pragma once

#include "Foundation/Platform/Export.h"

class Treporter;

/// An alert that a user interface shows through its reporter. It decides nothing about memory: whoever notices that
/// there is little calls showAlert().
///
/// \code
///   alert.setReporter(&dialogs);
///   alert.setSuppressAlertTrigger(1); // once is enough
///   if (!TmallocAllocator::checkFreeMemory(100000000))
///     alert.showAlert();
/// \endcode
class FOUNDATION_API TmemoryAlert
{
public:
  /// Without a reporter, and the trigger off.
  TmemoryAlert() noexcept = default;

  /// The reporter that shows the alert; null for none. It must outlive its use here.
  void setReporter(Treporter* reporter) noexcept;

  /// With \p flag the next alert shown is the last, until this is called again; without, each is shown.
  void setSuppressAlertTrigger(unsigned char flag) noexcept;

  /// Calls the reporter's reportMsg() with two nulls, unless there is none or the alert was the last to be shown.
  void showAlert();

private:
  Treporter* fReporter = nullptr;
  unsigned char fSuppress = 0; // after the next
  unsigned char fShown = 0;    // and suppressed since
};
