#include "Foundation/String/Tstring.h"

#include "Foundation/Platform/Sanitizer.h"
#include "Foundation/Platform/Text.h"
#include "Foundation/Platform/Thread.h"
#include "Foundation/String/TcharString.h"
#include "Foundation/String/TstringId.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ostream>

namespace {

constexpr std::size_t kMaxLength = 0xFFFFFFFF - 35; // what both rules for sizes can still round up
constexpr std::size_t kNotOwn = ~std::size_t(0);
constexpr std::size_t kShortBlock = 40;
constexpr std::size_t kBlockStep = 32; // what append(char) relies on

constexpr std::size_t freshSize(std::size_t n)
{
  return (n + 35) / 20 * 20;
}

constexpr std::size_t grownSize(std::size_t n)
{
  return (n + 20) & ~std::size_t(3);
}

// What is asked of malloc for a buffer of \p size bytes, a function of the size alone so that nothing more needs to be
// kept: all short texts get one size; longer ones up to a third more, in steps of 32 and then of a quarter, so that a
// text built byte by byte moves a logarithmic number of times.
std::size_t blockSize(std::size_t size)
{
  if (size <= kShortBlock)
    return kShortBlock;
  const std::size_t step = std::max(kBlockStep, 2 * std::bit_floor(size / 8));
  return std::max(size, (size + step - 1) & ~(step - 1)); // what would wrap is left to malloc to refuse
}

// The blocks of short texts that each thread keeps for the next ones: a malloc and a free would take longer than all
// else that happens to a short text.
struct ShortBlocks
{
  void* first;
  int count, limit; // a limit of 0 before the first and of -1 after the last use
};

#ifdef FOUNDATION_ASAN
constexpr int kShortBlocks = -1; // none, so that it sees what happens to each
#else
constexpr int kShortBlocks = 64;
#endif

#ifdef __linux__
[[gnu::tls_model("initial-exec")]]
#endif
constinit thread_local ShortBlocks gShortBlocks = {};

void endShortBlocks()
{
  while (void* const block = gShortBlocks.first)
  {
    std::memcpy(&gShortBlocks.first, block, sizeof block);
    std::free(block);
  }
  gShortBlocks.limit = -1;
}

[[gnu::noinline]] void beginShortBlocks()
{
  gShortBlocks.limit = Platform::callAtThreadEnd(endShortBlocks) ? kShortBlocks : -1;
}

void* takeBlock(std::size_t size)
{
  ShortBlocks& blocks = gShortBlocks;
  if (size > kShortBlock || !blocks.first)
    return std::malloc(blockSize(size));
  void* const block = blocks.first;
  std::memcpy(&blocks.first, block, sizeof block);
  --blocks.count;
  return block;
}

void releaseBlock(Tstring::TstringData* data)
{
  ShortBlocks& blocks = gShortBlocks;
  if (data->fCapacity > kShortBlock - 16)
    return std::free(data);
  if (blocks.limit == 0)
    beginShortBlocks();
  if (blocks.count >= blocks.limit)
    return std::free(data);
  void* const block = data;
  std::memcpy(block, &blocks.first, sizeof block);
  blocks.first = block;
  ++blocks.count;
}

TuInt32 capacityOf(std::size_t size)
{
  return static_cast<TuInt32>(size - 16);
}

// Gives an unshared buffer another size. False, with the buffer as it was, when there is no memory.
bool changeSize(Tstring::TstringData*& data, std::size_t size)
{
  const std::size_t block = blockSize(size);
  if (block != blockSize(std::size_t(data->fCapacity) + 16))
  {
    void* const moved = std::realloc(data, block);
    if (!moved)
      return false;
    data = static_cast<Tstring::TstringData*>(moved);
  }
  data->fCapacity = capacityOf(size);
  return true;
}

// \p length + \p count * \p each, or more than any string has.
std::size_t sum(std::size_t length, std::size_t count, std::size_t each)
{
  std::size_t result;
  return __builtin_mul_overflow(count, each, &result) || __builtin_add_overflow(result, length, &result)
           ? kMaxLength + 1
           : result;
}

void setLength(Tstring::TstringData* data, std::size_t length)
{
  data->fLength = static_cast<TuInt32>(length);
  data->text()[length] = '\0';
}

bool isSpace(char c)
{
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

char upper(char c)
{
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

char lower(char c)
{
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool isBlank(char c)
{
  return c == ' ' || c == '\t';
}

bool isDigit(char c)
{
  return c >= '0' && c <= '9';
}

const char* skipBlanks(const char* text)
{
  while (isBlank(*text))
    ++text;
  return text;
}

// Whether \p text is blanks, a sign out of \p signs or none, digits, blanks, and ends there.
bool isInteger(const Tstring& string, const char* signs)
{
  const char* text = skipBlanks(string.asC());
  if (*text && std::strchr(signs, *text))
    ++text;
  if (!isDigit(*text))
    return false;
  while (isDigit(*text))
    ++text;
  return skipBlanks(text) == string.end();
}

// Whether \p pattern describes all of \p text. The last '*' is enough to come back to: what one before it could take,
// the last one can take as well. So the time is bounded by the product of the lengths.
bool regMatch(std::string_view text, const char* pattern)
{
  const char *at = text.data(), *const end = at + text.size();
  const char *afterStar = nullptr, *starEnd = nullptr;
  for (;;)
  {
    if (*pattern == '*')
    {
      afterStar = ++pattern;
      starEnd = at;
      continue;
    }
    if (at == end)
      return !*pattern;
    const bool quoted = *pattern == '\\' && pattern[1];
    if (*pattern && (*pattern == '?' || pattern[quoted] == *at))
    {
      pattern += quoted ? 2 : 1;
      ++at;
    }
    else if (afterStar)
    {
      pattern = afterStar;
      at = ++starEnd;
    }
    else
      return false;
  }
}

// Appends what vsnprintf makes of the arguments.
void appendFormatted(Tstring& string, const char* format, va_list arguments) FOUNDATION_PRINTF(2, 0);
void appendFormatted(Tstring& string, const char* format, va_list arguments)
{
  char local[128];
  va_list again;
  va_copy(again, arguments);
  const int size = std::vsnprintf(local, sizeof local, format, arguments);
  if (size >= 0 && std::size_t(size) < sizeof local)
    string.append(local, static_cast<unsigned long>(size));
  else if (size >= 0)
  {
    if (char* const text = static_cast<char*>(std::malloc(std::size_t(size) + 1)))
    {
      std::vsnprintf(text, std::size_t(size) + 1, format, again);
      string.append(text, static_cast<unsigned long>(size));
      std::free(text);
    }
  }
  va_end(again);
}

void appendFormatted(Tstring& string, const char* format, ...) FOUNDATION_PRINTF(2, 3);
void appendFormatted(Tstring& string, const char* format, ...)
{
  va_list arguments;
  va_start(arguments, format);
  appendFormatted(string, format, arguments);
  va_end(arguments);
}

constexpr int kDeepestGroup = 256;
constexpr long kDefaultPrecision = 6;
constexpr long kAllDigits = 1100; // no double has as many, and "%lg" leaves out zeros at the end

const char kEscapes[] = "a\ab\bf\fn\nr\rt\tv\v"; // letter and character

} // namespace

// The buffer

Tstring::TstringData* Tstring::TstringData::create(std::size_t n) noexcept
{
  if (n > kMaxLength)
    return nullptr;
  const std::size_t size = freshSize(n);
  void* const block = takeBlock(size);
  if (!block)
    return nullptr;
  auto* const data = new (block) TstringData(capacityOf(size));
  data->text()[0] = '\0';
  return data;
}

Tstring::TstringData* Tstring::TstringData::create(const char* text, std::size_t length) noexcept
{
  TstringData* const data = create(length);
  if (data)
  {
    std::memcpy(data->text(), text, length);
    setLength(data, length);
  }
  return data;
}

void Tstring::TstringData::destroy(TstringData*& data) noexcept
{
  if (data && --data->fCount == 0)
    releaseBlock(data);
  data = nullptr;
}

void Tstring::TstringData::grow(TstringData*& data, std::size_t n, unsigned char keep) noexcept
{
  if (data)
    growRealloc(data, n, keep);
  else
    data = create(n);
}

void Tstring::TstringData::growRealloc(TstringData*& data, std::size_t n, unsigned char keep) noexcept
{
  if (data->fCount > 1)
  {
    TstringData* const shared = data;
    data = create(keep ? std::max<std::size_t>(n, shared->fLength) : n);
    if (data && keep)
    {
      std::memcpy(data->text(), shared->text(), std::size_t(shared->fLength) + 1);
      data->fLength = shared->fLength;
    }
    --shared->fCount;
  }
  else if (n > data->fCapacity)
  {
    if (n > kMaxLength || !changeSize(data, grownSize(n)))
      destroy(data);
    else if (!keep)
      setLength(data, 0);
  }
}

void Tstring::TstringData::shrink(TstringData*& data, std::size_t n, unsigned char keep) noexcept
{
  const std::size_t length = keep ? std::min<std::size_t>(n, data->fLength) : 0;
  if (data->fCount > 1)
  {
    TstringData* const shared = data;
    data = create(std::min<std::size_t>(n, shared->fLength));
    --shared->fCount;
    if (!data)
      return;
    std::memcpy(data->text(), shared->text(), length);
  }
  else if (n < data->fCapacity && !changeSize(data, grownSize(n)))
    return destroy(data);
  setLength(data, length);
}

// Assignment

long Tstring::set(const char* text) noexcept
{
  assign(text, text ? std::strlen(text) : 0);
  return 0;
}

long Tstring::set(const char* text, unsigned long length) noexcept
{
  assign(text, text ? length : 0);
  return 0;
}

void Tstring::assign(const char* text, std::size_t length) noexcept
{
  if (length == 0)
    return clear();
  // A part of our own text moves with it; if the text is shared, the others keep it where it is.
  const std::size_t offset = offsetOf(text);
  const bool isOwn = offset != kNotOwn && fData->fCount == 1;
  TstringData::grow(fData, length, isOwn);
  if (!fData)
    return;
  std::memmove(fData->text(), isOwn ? fData->text() + offset : text, length);
  setLength(fData, length);
}

// Where \p text begins in our own, its end included, or kNotOwn.
std::size_t Tstring::offsetOf(const char* text) const noexcept
{
  const std::size_t offset = reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(asC());
  return fData && offset <= fData->fLength ? offset : kNotOwn;
}

long Tstring::set(std::string_view text) noexcept
{
  assign(text.data(), text.size());
  return 0;
}

long Tstring::set(const Tstring& other) noexcept
{
  Tstring(other).swap(*this);
  return 0;
}

long Tstring::set(const TstringId& id) noexcept
{
  id.asString().swap(*this);
  return 0;
}

void Tstring::setInt32(long value) noexcept
{
  clear();
  appendFormatted(*this, "%ld", value);
}

void Tstring::setUInt32(unsigned long value) noexcept
{
  clear();
  appendFormatted(*this, "%lu", value);
}

void Tstring::setDouble(double value, long precision) noexcept
{
  if (precision == 0)
    precision = kDefaultPrecision;
  clear();
  appendFormatted(*this, "%.*lg", precision > 0 ? static_cast<int>(std::min(precision, kAllDigits)) : -1, value);
}

void Tstring::format(Tstring* result, const char* pattern, ...) noexcept
{
  va_list arguments;
  va_start(arguments, pattern);
  vformat(result, pattern, arguments);
  va_end(arguments);
}

void Tstring::vformat(Tstring* result, const char* pattern, va_list arguments) noexcept
{
  // The pattern with its conversions of doubles replaced; each takes up to five bytes more.
  pattern = pattern ? pattern : "";
  Tstring format, text;
  TstringData::grow(format.fData, std::strlen(pattern) * 6, 1);
  if (!format.fData)
    return text.swap(*result);
  while (const char* const percent = std::strchr(pattern, '%'))
  {
    const char* const width = percent + 1 + std::strspn(percent + 1, "-+ #0'");
    const char* const precision = width + std::strspn(width, "*0123456789");
    const char* const size = precision + (*precision == '.' ? 1 + std::strspn(precision + 1, "*0123456789") : 0);
    const char* const conversion = size + std::strspn(size, "hljztLI");
    const char* const end = conversion + (*conversion != '\0');
    if (*conversion && std::strchr("eEfFgGaA", *conversion))
    {
      format.append(pattern, static_cast<unsigned long>(percent - pattern));
      format.append("%- ");
      format.append(width, static_cast<unsigned long>(precision - width));
      if (*precision == '.')
        format.append(precision, static_cast<unsigned long>(size - precision));
      else
        format.append(".6");
      format.append(*size == 'L' ? "Lg" : "lg");
    }
    else
      format.append(pattern, static_cast<unsigned long>(end - pattern));
    pattern = end;
  }
  format.append(pattern);
  appendFormatted(text, format.asC(), arguments);
  text.swap(*result);
}

// Length and access

const unsigned char* Tstring::asPascal() const noexcept
{
  static unsigned char text[256];
  text[0] = static_cast<unsigned char>(std::min(length(), 255UL));
  std::memcpy(text + 1, asC(), text[0]);
  return text;
}

void Tstring::reserve(unsigned int capacity, unsigned char keep) noexcept
{
  TstringData::grow(fData, capacity, keep);
}

void Tstring::resize(unsigned long capacity) noexcept
{
  if (fData && capacity <= fData->fCapacity)
    TstringData::shrink(fData, capacity, 1);
  else if (capacity != 0)
    TstringData::grow(fData, capacity, 1);
}

void Tstring::clear() noexcept
{
  if (!fData)
    return;
  if (fData->fCount > 1)
    TstringData::destroy(fData);
  else
    setLength(fData, 0);
}

// Appending

long Tstring::append(const TstringId& id) noexcept
{
  return append(id.asString());
}

long Tstring::append(const char* text) noexcept
{
  return append(text, text ? std::strlen(text) : 0);
}

long Tstring::append(const char* text, unsigned long length) noexcept
{
  if (!text || length == 0)
    return 0;
  const std::size_t before = this->length();
  const std::size_t offset = offsetOf(text);
  TstringData::grow(fData, sum(before, 1, length), 1);
  if (!fData)
    return 0;
  std::memmove(fData->text() + before, offset != kNotOwn ? fData->text() + offset : text, length);
  setLength(fData, before + length);
  return 0;
}

Tstring Tstring::joined(std::string_view left, std::string_view right) noexcept
{
  Tstring result;
  if (left.size() + right.size() == 0)
    return result;
  result.fData = TstringData::create(sum(left.size(), 1, right.size()));
  if (result.fData)
  {
    std::copy(left.begin(), left.end(), result.fData->text());
    std::copy(right.begin(), right.end(), result.fData->text() + left.size());
    setLength(result.fData, left.size() + right.size());
  }
  return result;
}

// Comparison

int Tstring::caseCompare(const char* other) const noexcept
{
  return Platform::compareIgnoringCase(asC(), other ? other : "");
}

TuInt32 Tstring::hash() const noexcept
{
  if (empty())
    return 0xFFFFFFFF;
  const auto byte = [](char c) { return static_cast<TuInt32>(static_cast<signed char>(c)); };
  // A byte with 32 behind it has been shifted out.
  const char* at = end() - std::min(length(), 32UL);
  TuInt32 h = 0;
  for (; end() - at >= 4; at += 4) // four at once, whose places do not wait for one another
    h = (h << 4) ^ (byte(at[0]) << 3) ^ ((byte(at[1]) << 2) ^ (byte(at[2]) << 1) ^ byte(at[3]));
  for (; at != end(); ++at)
    h = (h << 1) ^ byte(*at);
  return h ^ (h >> 10) ^ (h >> 20);
}

// Search

long Tstring::index(char c, unsigned long start) const noexcept
{
  if (start >= length())
    return -1;
  const void* const found = std::memchr(asC() + start, c, length() - start);
  return found ? static_cast<const char*>(found) - asC() : -1;
}

long Tstring::rindex(char c, unsigned long last) const noexcept
{
  return static_cast<long>(std::string_view(*this).rfind(c, last));
}

long Tstring::findstr(const Tstring& text) const noexcept
{
  return empty() ? -1 : Platform::find(*this, text);
}

bool Tstring::isWildCard() const noexcept
{
  return index('*') >= 0 || index('?') >= 0;
}

// Substrings

void Tstring::substring(unsigned long first, unsigned long last, Tstring& result) const noexcept
{
  last = std::min(last, length() - 1);
  if (empty() || first > last)
    result.clear();
  else if (first == 0 && last == length() - 1)
    result.set(*this);
  else
    result.set(asC() + first, last - first + 1);
}

Tstring Tstring::substring(unsigned long first, unsigned long last) const noexcept
{
  Tstring result;
  substring(first, last, result);
  return result;
}

// Editing

// Makes the text our own and returns it; null when there is no memory.
char* Tstring::writable() noexcept
{
  TstringData::grow(fData, length(), 1);
  return fData ? fData->text() : nullptr;
}

void Tstring::removeSpaces() noexcept
{
  if (std::none_of(begin(), end(), isSpace))
    return;
  if (char* const text = writable())
    setLength(fData, static_cast<std::size_t>(std::remove_if(text, text + length(), isSpace) - text));
}

void Tstring::removeInitialAndFinalSpaces() noexcept
{
  const std::string_view text(*this);
  const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
  const std::size_t end = text.find_last_not_of(' ') + 1;
  if (first != 0 || end != text.size())
    set(text.data() + first, end > first ? end - first : 0);
}

void Tstring::collapseWhiteSpace() noexcept
{
  const auto isUnwanted = [](char before, char c) { return isSpace(c) && (c != ' ' || isSpace(before)); };
  bool isCollapsed = empty() || (!isSpace(*begin()) && !isSpace(end()[-1]));
  for (const char* at = begin(); isCollapsed && at + 1 < end(); ++at)
    isCollapsed = !isUnwanted(at[0], at[1]);
  if (isCollapsed)
    return;
  char* const text = writable();
  if (!text)
    return;
  char* to = text;
  for (const char c : *this)
  {
    if (!isSpace(c))
      *to++ = c;
    else if (to != text && to[-1] != ' ')
      *to++ = ' ';
  }
  if (to != text && to[-1] == ' ')
    --to;
  setLength(fData, static_cast<std::size_t>(to - text));
}

void Tstring::change(unsigned long count, char (*convert)(char)) noexcept
{
  unsigned long i = 0;
  while (i != count && convert(asC()[i]) == asC()[i])
    ++i;
  if (i == count)
    return;
  if (char* const text = writable())
    std::transform(text + i, text + count, text + i, convert);
}

void Tstring::capitalize() noexcept
{
  change(std::min(length(), 1UL), upper);
}

void Tstring::toUpperCase() noexcept
{
  change(length(), upper);
}

void Tstring::toLowerCase() noexcept
{
  change(length(), lower);
}

long Tstring::substitute(const Tstring& from, const Tstring& to) noexcept
{
  if (from.empty() || from == to)
    return 0;
  std::size_t count = 0;
  std::string_view rest(*this);
  for (long found; (found = Platform::find(rest, from)) >= 0; ++count)
    rest.remove_prefix(static_cast<std::size_t>(found) + from.length());
  if (count == 0)
    return 0;
  Tstring result;
  TstringData::grow(result.fData, sum(length() - count * from.length(), count, to.length()), 1);
  if (result.fData)
  {
    rest = *this;
    for (; count != 0; --count)
    {
      const auto found = static_cast<unsigned long>(Platform::find(rest, from));
      result.append(rest.data(), found);
      result.append(to);
      rest.remove_prefix(found + from.length());
    }
    result.append(rest.data(), rest.size());
  }
  swap(result);
  return 0;
}

void Tstring::decodeEscapeSequences() noexcept
{
  if (index('\\') < 0)
    return;
  char* to = writable();
  if (!to)
    return;
  const auto digits = [](const char*& at, const char* stop, int base) {
    int value = 0;
    for (; at != stop && std::isxdigit(static_cast<unsigned char>(*at)); ++at)
    {
      const int digit = isDigit(*at) ? *at - '0' : lower(*at) - 'a' + 10;
      if (digit >= base)
        break;
      value = value * base + digit;
    }
    return static_cast<char>(value);
  };
  for (const char* at = begin(); at != end();)
  {
    if (*at != '\\' || at + 1 == end())
    {
      *to++ = *at++;
      continue;
    }
    const char* const stop = std::min(++at + 3, end());
    const char* const escape = std::strchr(kEscapes, *at);
    if (*at >= '0' && *at <= '7')
      *to++ = digits(at, stop, 8);
    else if (*at == 'x' && at + 1 != end() && std::isxdigit(static_cast<unsigned char>(at[1])))
      *to++ = digits(++at, stop, 16);
    else if (*at && escape && (escape - kEscapes) % 2 == 0)
    {
      *to++ = escape[1];
      ++at;
    }
    else
      *to++ = *at++;
  }
  setLength(fData, static_cast<std::size_t>(to - begin()));
}

void Tstring::encodeEscapeSequences(unsigned char all) noexcept
{
  // Writes the escape of \p c, or \p c, and returns the bytes written.
  const auto encode = [&](char c, char* to) -> std::size_t {
    const auto byte = static_cast<unsigned char>(c);
    const char* const escape = std::strchr(kEscapes, c);
    *to = '\\';
    if (c && escape && (escape - kEscapes) % 2 == 1)
      to[1] = escape[-1];
    else if (c == '\\' || c == '"' || c == '\'')
      to[1] = c;
    else if (byte < ' ' || byte == 127 || (all && byte > 126))
    {
      for (int i = 1, shift = 6; i != 4; ++i, shift -= 3)
        to[i] = static_cast<char>('0' + (byte >> shift) % 8);
      return 4;
    }
    else
    {
      *to = c;
      return 1;
    }
    return 2;
  };
  char sequence[4];
  std::size_t size = 0;
  for (const char c : *this)
    size = sum(size, 1, encode(c, sequence));
  if (size == length())
    return;
  Tstring result;
  TstringData::grow(result.fData, size, 1);
  if (result.fData)
  {
    char* to = result.fData->text();
    for (const char c : *this)
      to += encode(c, to);
    setLength(result.fData, size);
  }
  swap(result);
}

// Paths

Tstring Tstring::extension() const noexcept
{
  const long dot = rindex('.');
  return dot < 0 ? Tstring() : substring(static_cast<unsigned long>(dot) + 1, length());
}

Tstring Tstring::root() const noexcept
{
  Tstring result(*this);
  result.stripExtension();
  return result;
}

void Tstring::root(const Tstring& path) noexcept
{
  *this = path.root();
}

void Tstring::stripExtension() noexcept
{
  const long dot = rindex('.');
  if (dot == 0)
    clear();
  else if (dot > 0)
    set(asC(), static_cast<unsigned long>(dot));
}

Tstring Tstring::baseName() const noexcept
{
  std::string_view path(*this);
  if (path.empty())
    return ".";
  path.remove_suffix(path.size() - 1 - std::min(path.find_last_not_of('/'), path.size() - 1));
  if (path.find_last_not_of('/') == path.npos)
    return "/";
  path.remove_prefix(path.rfind('/') + 1);
  return path.size() == length() ? *this : Tstring(path);
}

Tstring Tstring::directoryPath() const noexcept
{
  const std::string_view path(*this);
  const std::size_t end = path.find_last_not_of('/');
  if (end == path.npos)
    return path.empty() ? "." : "/";
  const std::size_t slash = path.rfind('/', end);
  if (slash == path.npos)
    return ".";
  const std::size_t last = path.find_last_not_of('/', slash);
  return last == path.npos ? "/" : Tstring(path.substr(0, last + 1));
}

// Numbers

Tint32 Tstring::asInt32() const noexcept
{
  return static_cast<Tint32>(std::clamp<long long>(std::strtoll(asC(), nullptr, 10), INT32_MIN, INT32_MAX));
}

Tint16 Tstring::asInt16() const noexcept
{
  return static_cast<Tint16>(asInt32());
}

TuInt32 Tstring::asUInt32() const noexcept
{
  // A magnitude of up to 32 bits counts, and back from 2^32 if negative; what is beyond is the end of the range.
  const long long value = std::strtoll(asC(), nullptr, 10);
  return value > UINT32_MAX || value < -static_cast<long long>(UINT32_MAX) ? UINT32_MAX : static_cast<TuInt32>(value);
}

float Tstring::asFloat() const noexcept
{
  return static_cast<float>(asDouble());
}

double Tstring::asDouble() const noexcept
{
  return std::strtod(asC(), nullptr);
}

bool Tstring::isInt32() const noexcept
{
  return isInteger(*this, "+-");
}

bool Tstring::isUInt32() const noexcept
{
  return isInteger(*this, "+");
}

bool Tstring::isDouble() const noexcept
{
  const char* const first = skipBlanks(asC());
  if (isSpace(*first)) // strtod skips more than blanks
    return false;
  char* last;
  std::strtod(first, &last);
  return last != first && skipBlanks(last) == end();
}

// Patterns

bool Tstring::matches(const char* pattern) const noexcept
{
  if (empty() || !pattern)
    return empty() && !pattern;
  return *pattern && regMatch(*this, pattern);
}

bool Tstring::matchesRegexp(const char* pattern, Tstring* capture1, Tstring* capture2, Tstring* capture3,
                            Tstring* capture4, Tstring* capture5, Tstring* capture6, Tstring* capture7,
                            Tstring* capture8, Tstring* capture9) const noexcept
{
  const std::string_view given = view(pattern);
  // The system's matchers recurse into parentheses.
  int depth = 0, deepest = 0;
  for (const char c : given)
  {
    depth += c == '(' ? 1 : c == ')' && depth != 0 ? -1 : 0;
    deepest = std::max(deepest, depth);
  }
  if (deepest > kDeepestGroup)
    return false;
  const bool isAnchored = !given.empty() && (given.front() == '^' || given.back() == '$');
  Tstring expression;
  format(&expression, isAnchored ? "%s" : "^%s$", given.empty() ? "" : given.data());
  if (expression.empty()) // no memory: an empty expression would be found everywhere
    return false;
  const Tstring text(*this); // a capture may be this string
  std::string_view groups[10];
  if (!Platform::findRegexp(expression.asC(), text.asC(), groups))
    return false;
  Tstring* const captures[] = {capture1, capture2, capture3, capture4, capture5,
                               capture6, capture7, capture8, capture9};
  for (int i = 0; i != 9; ++i)
  {
    if (captures[i])
      captures[i]->assign(groups[i + 1].data(), groups[i + 1].size());
  }
  return true;
}

std::ostream& operator<<(std::ostream& out, const Tstring& text)
{
  return out << std::string_view(text);
}

std::ostream& operator<<(std::ostream& out, const TcharString& text)
{
  return out << text.asC();
}
