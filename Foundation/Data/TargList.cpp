#include "Foundation/Data/TargList.h"

#include "Foundation/Data/Components.h"
#include "Foundation/Data/Typed.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>
#include <string_view>

NAMED_RECORD(TargList, "arglist", 4, nullptr, 0, 0);
TYPE_CAST(TargList, Tuntyped)

namespace {

constexpr char kTicks = 't';
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

// Whether \p value, when it is rounded or cut off, is a Tint32.
bool fits(double value)
{
  return value > -2147483648.5 && value < 2147483647.5;
}

bool isWhiteSpaceOrEnd(std::string_view text, std::size_t at)
{
  return at == text.size() || kWhiteSpace.find(text[at]) != kWhiteSpace.npos;
}

} // namespace

bool TargList::asInt32(unsigned int index, Tint32& value) const noexcept
{
  double number;
  if (!asDouble(index, number) || !fits(number) || number != std::trunc(number))
    return false;
  value = static_cast<Tint32>(number);
  return true;
}

bool TargList::asTime(unsigned int index, TanimTime& value) const noexcept
{
  double seconds;
  if (!asDouble(index, seconds) || !fits(seconds * TanimTime::kTicksPerSecond))
    return false;
  value.setValue(seconds, kTimeSeconds);
  return true;
}

void TargList::append(Tstring& text, unsigned int index, unsigned long) const
{
  Tstring value;
  asString(index, value);
  appendPiece(text, value);
}

void TargList::appendAll(Tstring& text, unsigned long flags) const
{
  for (unsigned int i = 0; i < length(); ++i)
  {
    if (i != 0)
      appendPiece(text, " ");
    append(text, i, flags);
  }
}

std::ostream& operator<<(std::ostream& out, const TargList& list)
{
  Tstring text;
  list.appendAll(text);
  return out << text;
}

// Numbers

bool TdoubleArgList::asDouble(unsigned int index, double& value) const noexcept
{
  if (index >= length())
    return false;
  std::memcpy(&value, &fValues[index], sizeof value); // with the bits of what is no number
  return true;
}

bool TdoubleArgList::asString(unsigned int index, Tstring& value) const
{
  if (index >= length())
    return false;
  Tstring text;
  appendNumber(text, fValues[index]);
  value = text;
  return true;
}

// Times

bool TtimeArgList::asDouble(unsigned int index, double& value) const noexcept
{
  if (index >= length())
    return false;
  value = static_cast<double>(fValues[index].ticks()) / TanimTime::kTicksPerSecond;
  return true;
}

bool TtimeArgList::asTime(unsigned int index, TanimTime& value) const noexcept
{
  if (index >= length())
    return false;
  value = fValues[index];
  return true;
}

bool TtimeArgList::asString(unsigned int index, Tstring& value) const
{
  if (index >= length())
    return false;
  Tstring text;
  appendNumber(text, fValues[index].ticks());
  appendPiece(text, {&kTicks, 1});
  value = text;
  return true;
}

// Texts

bool TstringArgList::setText(const Tstring& text)
{
  TstringArray found;
  for (std::string_view rest = text;;)
  {
    rest.remove_prefix(std::min(rest.find_first_not_of(kWhiteSpace), rest.size()));
    if (rest.empty())
      break;
    const bool quoted = rest.front() == '"';
    std::size_t end = quoted ? 1 : std::min(rest.find_first_of(kWhiteSpace), rest.size());
    while (quoted && end < rest.size() && rest[end] != '"')
      end += rest[end] == '\\' ? 2 : 1;
    if (quoted && (end >= rest.size() || !isWhiteSpaceOrEnd(rest, end + 1)))
      return false;
    const std::string_view piece = rest.substr(quoted, end - quoted);
    Tstring value(piece);
    if (quoted)
      value.decodeEscapeSequences();
    if (value.empty() && !piece.empty())
      throw TmemoryException();
    found.addLast(value);
    rest.remove_prefix(end + quoted);
  }
  fValues = std::move(found);
  return true;
}

bool TstringArgList::asDouble(unsigned int index, double& value) const noexcept
{
  return index < length() && parseNumber(fValues[index], value);
}

bool TstringArgList::asInt32(unsigned int index, Tint32& value) const noexcept
{
  return index < length() && parseNumber(fValues[index], value);
}

bool TstringArgList::asTime(unsigned int index, TanimTime& value) const noexcept
{
  if (index >= length())
    return false;
  const std::string_view text = fValues[index];
  Tint32 ticks;
  if (text.empty() || text.back() != kTicks || !parseNumber(text.substr(0, text.size() - 1), ticks))
    return TargList::asTime(index, value);
  value.setTicks(ticks);
  return true;
}

bool TstringArgList::asString(unsigned int index, Tstring& value) const
{
  if (index >= length())
    return false;
  value = fValues[index];
  return true;
}

void TstringArgList::append(Tstring& text, unsigned int index, unsigned long flags) const
{
  Tstring value = fValues[index];
  const bool plain = !value.empty() && value[0] != '"' &&
                     std::none_of(value.begin(), value.end(), [](unsigned char c) { return c <= ' '; });
  if (plain && !(flags & kQuoteAll))
  {
    appendPiece(text, value);
    return;
  }
  value.encodeEscapeSequences(0);
  if (value.empty() && !fValues[index].empty())
    throw TmemoryException();
  appendPiece(text, "\"");
  appendPiece(text, value);
  appendPiece(text, "\"");
}
