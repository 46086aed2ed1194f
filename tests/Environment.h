/// \file
/// Environment variables of the tests' own process.

#pragma once

#include <cstdlib>
#include <string>

/// An empty \p value unsets it.
inline void setVariable(const char* name, const std::string& value)
{
#ifdef _WIN32
  _putenv_s(name, value.c_str());
#else
  value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
#endif
}
