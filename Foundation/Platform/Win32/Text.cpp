#include "Foundation/Platform/Text.h"

#include <windows.h>

#include <cstring>
#include <new>
#include <regex>

namespace Platform {

int compareIgnoringCase(const char* left, const char* right) noexcept
{
  return lstrcmpiA(left, right);
}

long find(std::string_view text, std::string_view part) noexcept
{
  return static_cast<long>(text.find(part));
}

bool findRegexp(const char* pattern, const char* text, std::string_view (&groups)[10]) noexcept
try
{
  // The polynomial matcher: the other one recurses once per character.
  const std::regex expression(pattern, std::regex::extended | std::regex_constants::__polynomial);
  std::cmatch matches;
  if (!std::regex_search(text, matches, expression))
    return false;
  for (std::size_t i = 0; i != 10; ++i)
  {
    groups[i] = matches[i].matched ? std::string_view(matches[i].first, static_cast<std::size_t>(matches[i].length()))
                                   : std::string_view();
  }
  return true;
}
catch (const std::exception&)
{
  return false;
}

} // namespace Platform
