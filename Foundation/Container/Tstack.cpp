#include "Foundation/Container/Tstack.h"

#include <cstring>

Tstack::Tstack(unsigned int elementSize)
  : Tarray(elementSize, 4)
{
}

void Tstack::clear()
{
  reset();
}

long Tstack::pushElement(void* element)
{
  return insertElement(element, fLength, 1);
}

bool Tstack::popElement(void* out)
{
  if (!getTopElement(out))
    return false;
  --fLength;
  return true;
}

bool Tstack::getTopElement(void* out) const
{
  if (isEmpty())
    return false;
  std::memmove(out, address(fLength - 1), fElementSize);
  return true;
}
