/// \file
/// Texception: the root of what the library throws.

#pragma once

#include "Foundation/Platform/Export.h"

#include <exception>

/// The base of the library's exceptions. It holds no data.
class FOUNDATION_API Texception : public std::exception
{
public:
  const char* what() const noexcept override;
};

/// Memory ran out.
class FOUNDATION_API TmemoryException : public Texception
{
public:
  const char* what() const noexcept override;
};
