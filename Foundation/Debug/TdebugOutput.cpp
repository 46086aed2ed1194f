#include "Foundation/Debug/TdebugOutput.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>

namespace {

constexpr char kIndents[] = "                              ";
static_assert(sizeof kIndents - 1 == std::size_t(TdebugOutput::kSpacesPerIndent) * TdebugOutput::kMostIndents);
constexpr char kRule[] = "=======================================";
constexpr std::size_t kRuleLength = sizeof kRule - 1;

} // namespace

CDumpContext::~CDumpContext() = default;

// A text in the making. It is local to each call, so that an output may print while its own text is reported.
class TdebugOutput::Line
{
public:
  Line() = default;
  ~Line()
  {
    if (fText != fOwn)
      std::free(fText);
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  const char* text() const { return fText; }

  void add(const char* text) { add(text, std::strlen(text)); }
  void add(const char* text, std::size_t length)
  {
    const std::size_t fits = makeRoom(length) ? length : fCapacity - fLength - 1;
    std::memcpy(fText + fLength, text, fits);
    fLength += fits;
    fText[fLength] = '\0';
  }

  void addFormatted(const char* format, std::va_list arguments)
  {
    if (!format)
      return;
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(fText + fLength, fCapacity - fLength, format, arguments);
    if (length < 0)
      add(format);
    else if (std::size_t(length) < fCapacity - fLength)
      fLength += std::size_t(length);
    else if (makeRoom(std::size_t(length)))
      fLength += std::size_t(std::vsnprintf(fText + fLength, fCapacity - fLength, format, again));
    else
      fLength = fCapacity - 1; // cut off
    va_end(again);
  }

private:
  bool makeRoom(std::size_t length)
  {
    if (length < fCapacity - fLength)
      return true;
    const std::size_t capacity = fLength + length + 1;
    char* grown = static_cast<char*>(std::realloc(fText == fOwn ? nullptr : fText, capacity));
    if (!grown)
      return false;
    if (fText == fOwn)
      std::memcpy(grown, fOwn, fLength + 1);
    fText = grown;
    fCapacity = capacity;
    return true;
  }

  char fOwn[512] = "";
  char* fText = fOwn;
  std::size_t fLength = 0;
  std::size_t fCapacity = sizeof fOwn;
};

TdebugOutput::TdebugOutput(std::ostream& stream, int indent)
  : fStream(&stream)
  , fIndent(indent)
{
}

TdebugOutput::TdebugOutput(CDumpContext& context, int indent)
  : fContext(&context)
  , fIndent(indent)
{
}

TdebugOutput::~TdebugOutput() = default;

void TdebugOutput::setTarget(std::ostream& stream, int indent)
{
  fStream = &stream;
  fIndent = indent;
}

TdebugOutput& TdebugOutput::sCerr()
{
  static std::ios_base::Init streams; // static initialisers of other sources may print before those of <iostream>
  alignas(TdebugOutput) static unsigned char storage[sizeof(TdebugOutput)]; // nothing destroys what is in there
  static TdebugOutput& output = *new (storage) TdebugOutput(std::cerr);
  return output;
}

TdebugOutput& TdebugOutput::sCout()
{
  static std::ios_base::Init streams; // static initialisers of other sources may print before those of <iostream>
  alignas(TdebugOutput) static unsigned char storage[sizeof(TdebugOutput)]; // nothing destroys what is in there
  static TdebugOutput& output = *new (storage) TdebugOutput(std::cout);
  return output;
}

void TdebugOutput::beginSection(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  vbeginSection(format, arguments);
  va_end(arguments);
}

void TdebugOutput::vbeginSection(const char* format, std::va_list arguments)
{
  Line title;
  title.addFormatted(format, arguments);
  print("%s\n", title.text());
  print("{\n");
  ++fIndent;
}

void TdebugOutput::endSection()
{
  --fIndent;
  print("}\n");
}

void TdebugOutput::printMark(const char* text)
{
  if (!text)
    print("%s%s\n", kRule, kRule);
  else
  {
    const char* piece = kRule + std::min(std::strlen(text) / 2 + 1, kRuleLength);
    print("%s %s %s\n", piece, text, piece);
  }
}

void TdebugOutput::printNoIndent(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  vprintNoIndent(format, arguments);
  va_end(arguments);
}

void TdebugOutput::vprintNoIndent(const char* format, std::va_list arguments)
{
  Line line;
  line.addFormatted(format, arguments);
  reportString(line.text());
}

void TdebugOutput::print(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  vprint(format, arguments);
  va_end(arguments);
}

void TdebugOutput::vprint(const char* format, std::va_list arguments)
{
  Line line;
  if (!fSkipNextIndent && fUseIndent)
    line.add(kIndents, std::size_t(std::clamp<long long>(fIndent, 0, kMostIndents)) * kSpacesPerIndent);
  fSkipNextIndent = false;
  line.addFormatted(format, arguments);
  reportString(line.text());
}

void TdebugOutput::printError(const char* format, ...)
{
  std::va_list arguments;
  va_start(arguments, format);
  vprintError(format, arguments);
  va_end(arguments);
}

void TdebugOutput::vprintError(const char* format, std::va_list arguments)
{
  Line line;
  line.addFormatted(format, arguments);
  print("*** ERROR *** %s\n", line.text());
}

void TdebugOutput::printDetail(const char* text)
{
  if (!text)
    return;
  setIndent(1);
  print("%s\n", text);
  setIndent(-1);
}

void TdebugOutput::setIndent(int delta)
{
  fIndent += delta;
}

void TdebugOutput::setIndentAbsolute(int level)
{
  fIndent = level;
}

void TdebugOutput::setUseIndent(unsigned char use)
{
  fUseIndent = use != 0;
}

void TdebugOutput::skipNextIndent()
{
  fSkipNextIndent = true;
}

void TdebugOutput::reportString()
{
  if (fStream)
    fStream->flush();
  else if (fContext)
    fContext->Flush();
}

void TdebugOutput::reportString(const char* text)
{
  if (!text)
    return;
  if (fStream)
    fStream->write(text, std::streamsize(std::strlen(text))); // `<<` would obey a width that somebody left behind
  else if (fContext)
    *fContext << text;
  reportString();
}

void TdebugOutput::getName(char* buffer)
{
  const char* name = this == &sCerr() ? "stderr" : this == &sCout() ? "stdout" : fStream ? "stream" : "dump context";
  std::snprintf(buffer, kNameSize, "%s", name);
}
