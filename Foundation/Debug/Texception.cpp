#include "Foundation/Debug/Texception.h"

const char* Texception::what() const noexcept
{
  return "Texception";
}

const char* TmemoryException::what() const noexcept
{
  return "TmemoryException";
}
