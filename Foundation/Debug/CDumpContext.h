/// \file
/// CDumpContext: a debugger's dump window as the target of a TdebugOutput.
///
/// Where the platform class library is there (include its headers first), its class of this name is meant and nothing
/// is declared here.

#pragma once

#ifndef __AFX_H__

#  include "Foundation/Platform/Export.h"

/// What takes the texts of a dump. Derive from it to show them where a debugger or a program looks.
class FOUNDATION_API CDumpContext
{
public:
  virtual ~CDumpContext();

  /// Takes \p text, which is gone afterwards.
  virtual CDumpContext& operator<<(const char* text) = 0;

  /// Makes what was taken so far visible.
  virtual void Flush() = 0;

protected:
  CDumpContext() = default;
  CDumpContext(const CDumpContext&) = default;
  CDumpContext& operator=(const CDumpContext&) = default;
};

#endif
