#include "Foundation/Platform/Text.h"

#include <regex.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <exception>
#include <string>

namespace Platform {

namespace {

// \p text in lower case. A byte that begins no character of the locale stands for itself.
std::wstring folded(const char* text)
{
  std::wstring result;
  std::mbstate_t state = {};
  for (std::size_t left = std::strlen(text); left != 0;)
  {
    wchar_t c;
    std::size_t size = std::mbrtowc(&c, text, left, &state);
    if (size > left)
    {
      c = static_cast<unsigned char>(*text);
      size = 1;
      state = {};
    }
    result += static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
    text += size;
    left -= size;
  }
  return result;
}

} // namespace

int compareIgnoringCase(const char* left, const char* right) noexcept
try
{
  return std::wcscoll(folded(left).c_str(), folded(right).c_str());
}
catch (const std::exception&)
{
  return std::strcmp(left, right);
}

long find(std::string_view text, std::string_view part) noexcept
{
  if (part.empty()) // whose address may be null
    return 0;
  const void* const found = memmem(text.data(), text.size(), part.data(), part.size());
  return found ? static_cast<const char*>(found) - text.data() : -1;
}

bool findRegexp(const char* pattern, const char* text, std::string_view (&groups)[10]) noexcept
{
  regex_t expression;
  if (regcomp(&expression, pattern, REG_EXTENDED) != 0)
    return false;
  regmatch_t matches[10];
  const bool found = regexec(&expression, text, 10, matches, 0) == 0;
  for (int i = 0; found && i != 10; ++i)
  {
    const regmatch_t& match = matches[i];
    groups[i] = match.rm_so < 0
                  ? std::string_view()
                  : std::string_view(text + match.rm_so, static_cast<std::size_t>(match.rm_eo - match.rm_so));
  }
  regfree(&expression);
  return found;
}

} // namespace Platform
