#include "Foundation/Data/TpreferenceItem.h"

#include "Foundation/Data/Typed.h"

#include <ostream>

TYPE_RECORD(TpreferenceItem, 20, nullptr, 0, 0);
TYPE_CAST(TpreferenceItem, Tuntyped)

std::ostream& operator<<(std::ostream& out, const TpreferenceItem& item)
{
  return out << item.name() << " = " << item.value() << (item.isChanged() ? " (changed)" : "");
}
