#include "Foundation/Container/StringArrays.h"

#include <string_view>

// It stands apart from the rest of Tstring because arrays of strings need strings first.
long Tstring::split(char separator, TstringArray& pieces) const
{
  const Tstring text = *this; // which may be an element of the array
  std::string_view rest = text;
  while (!rest.empty())
  {
    const std::string_view piece = rest.substr(0, rest.find(separator));
    if (!piece.empty())
      pieces.addLast(Tstring(piece));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
  }
  return 0;
}
