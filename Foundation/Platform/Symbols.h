/// \file
/// What an address of code belongs to. Internal to the library.

#pragma once

#include <cstdint>

namespace Platform {

/// A place in the program's code. What is not known is null or 0.
struct CodePlace
{
  const char* function = nullptr; // as the linker knows it, so that C++ names are mangled, or as the source does
  const char* file = nullptr;
  int line = 0;
  const char* module = nullptr;    // the file of the program or library
  std::uintptr_t moduleOffset = 0; // of the address in it
};

/// Calls \p report for \p address, which lies in an instruction: first for functions that the compiler put in line
/// there, innermost first, and at the end for the function that they are in. At least once. Texts are gone afterwards.
void findCode(std::uintptr_t address, void (*report)(const CodePlace& place, void* context), void* context);

} // namespace Platform
