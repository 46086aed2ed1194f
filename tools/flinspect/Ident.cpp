#include "Ident.h"

#include "Console.h"

#include <charconv>
#include <cstdio>

namespace {

// One character of an id at the front of `text`, which it is removed from.
unsigned char takeCharacter(std::string_view& text)
{
  if (text.front() != '\\')
  {
    const char plain = text.front();
    text.remove_prefix(1);
    return static_cast<unsigned char>(plain);
  }
  unsigned char code = 0;
  if (text.size() < 4 || text[1] != 'x' || std::from_chars(&text[2], &text[2] + 2, code, 16).ptr != &text[2] + 2)
    throw Failure(text, "'\\' must begin a \\xNN");
  text.remove_prefix(4);
  return code;
}

} // namespace

bool isPrintable(TuInt32 id)
{
  for (int shift = 24; shift >= 0; shift -= 8)
    if ((id >> shift & 0xFF) < 0x20 || (id >> shift & 0xFF) > 0x7E)
      return false;
  return true;
}

std::string idText(TuInt32 id)
{
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
  {
    const auto character = static_cast<unsigned char>(id >> shift & 0xFF);
    if (character >= 0x20 && character <= 0x7E &&
        std::string_view("\\/[]").find(char(character)) == std::string_view::npos)
    {
      text += char(character);
      continue;
    }
    char code[5];
    std::snprintf(code, sizeof code, "\\x%02X", unsigned(character));
    text += code;
  }
  return text;
}

ChunkPath::ChunkPath(std::string_view text)
  : fText(text)
{
  for (;;)
  {
    Step step{0, 1};
    int length = 0;
    for (; !text.empty() && text.front() != '/' && text.front() != '['; ++length)
      step.fId = step.fId << 8 | takeCharacter(text);
    if (length < 1 || length > 4)
      throw Failure(fText, "an id has one to four characters");
    for (; length < 4; ++length)
      step.fId = step.fId << 8 | ' ';
    if (!text.empty() && text.front() == '[')
    {
      const char* const end = text.data() + text.size();
      const auto [after, error] = std::from_chars(text.data() + 1, end, step.fNumber);
      if (error != std::errc() || after == end || *after != ']' || step.fNumber == 0)
        throw Failure(fText, "'[' must begin a number from 1 on, and ']' must end it");
      text.remove_prefix(static_cast<std::size_t>(after + 1 - text.data()));
    }
    fSteps.push_back(step);
    if (text.empty())
      return;
    if (text.front() != '/')
      throw Failure(fText, "'/' must separate the ids");
    text.remove_prefix(1);
  }
}

bool ChunkPath::begin(TuInt32 id, TuInt32 depth)
{
  if (fFound || fOver || depth != fMatched || id != fSteps[fMatched].fId || ++fCount != fSteps[fMatched].fNumber)
    return false;
  fCount = 0;
  fFound = ++fMatched == fSteps.size();
  return fFound;
}

void ChunkPath::end(TuInt32 depth)
{
  // The numbers make the way unique: when it is left, it was the only one.
  if (depth < fMatched)
    fOver = true;
}
