#include "Foundation/Debug/Texception.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr char kResourcePrefix[] = "TresourceException: ";
constexpr char kUnimplementedPrefix[] = "TunimplementedException: ";

template <class Exception>
Texception* keep(const Exception& exception)
{
  static Exception kept(exception);
  if (&exception != &kept)
    kept = exception;
  return &kept;
}

char* unimplementedText(const char* message)
{
  if (!message)
    return nullptr;
  const std::size_t size = std::strlen(message) + 1;
  char* text = static_cast<char*>(std::malloc(sizeof kUnimplementedPrefix - 1 + size));
  if (text)
  {
    std::memcpy(text, kUnimplementedPrefix, sizeof kUnimplementedPrefix - 1);
    std::memcpy(text + sizeof kUnimplementedPrefix - 1, message, size);
  }
  return text;
}

} // namespace

// The rest of what each class says of itself is with the metaclasses.
#define KEPT_EXCEPTION(Class)                                                                                          \
  Texception* Class::cache() const                                                                                     \
  {                                                                                                                    \
    return keep(*this);                                                                                                \
  }

KEPT_EXCEPTION(Texception)
KEPT_EXCEPTION(TmemoryException)
KEPT_EXCEPTION(ThandledException)
KEPT_EXCEPTION(TresourceException)
KEPT_EXCEPTION(TfailedException)
KEPT_EXCEPTION(TfileException)
KEPT_EXCEPTION(TunimplementedException)
KEPT_EXCEPTION(TbadDataCast)
KEPT_EXCEPTION(TincompatibleData)

const char* Texception::what() const noexcept
{
  return "Texception";
}

const char* TmemoryException::what() const noexcept
{
  return "TmemoryException";
}

const char* TbadDataCast::what() const noexcept
{
  return "TbadDataCast";
}

const char* TincompatibleData::what() const noexcept
{
  return "TincompatibleData";
}

ThandledException::ThandledException(const Texception& dealtWith)
{
  // Held ones are told apart by what they are now: to hold the kept ThandledException could be to hold oneself.
  const auto* outer = dynamic_cast<const ThandledException*>(&dealtWith);
  fHandled = outer ? outer->fHandled : dealtWith.cache();
  std::snprintf(fText, sizeof fText, "%s%s", outer ? "" : "ThandledException: ", dealtWith.what());
}

const char* ThandledException::what() const noexcept
{
  return fText;
}

TresourceException::TresourceException(const char* format, ...)
{
  static_assert(sizeof kResourcePrefix - 1 == kPrefixSize);
  std::memcpy(fText, kResourcePrefix, sizeof kResourcePrefix);
  if (!format)
    return;
  std::va_list arguments;
  va_start(arguments, format);
  if (std::vsnprintf(fText + kPrefixSize, kMessageSize, format, arguments) < 0)
    fText[kPrefixSize] = '\0';
  va_end(arguments);
}

const char* TresourceException::what() const noexcept
{
  return fText;
}

TfailedException::TfailedException(long code)
  : fCode(Tint32(code))
{
  std::snprintf(fText, sizeof fText, "TfailedException: status %ld", long(fCode));
}

const char* TfailedException::what() const noexcept
{
  return fText;
}

TfileException::TfileException(long code)
  : fCode(Tint32(code))
{
  std::snprintf(fText, sizeof fText, "TfileException: status %ld (%s)", long(fCode), std::strerror(int(fCode)));
}

const char* TfileException::what() const noexcept
{
  return fText;
}

TunimplementedException::TunimplementedException(const char* message) noexcept
  : fText(unimplementedText(message))
{
}

TunimplementedException::TunimplementedException(const TunimplementedException& other) noexcept
  : Texception(other)
  , fText(unimplementedText(other.message()))
{
}

TunimplementedException& TunimplementedException::operator=(const TunimplementedException& other) noexcept
{
  if (this != &other)
  {
    std::free(fText);
    fText = unimplementedText(other.message());
  }
  return *this;
}

TunimplementedException::~TunimplementedException()
{
  std::free(fText);
}

const char* TunimplementedException::message() const noexcept
{
  return fText ? fText + sizeof kUnimplementedPrefix - 1 : nullptr;
}

const char* TunimplementedException::what() const noexcept
{
  return fText ? fText : "TunimplementedException";
}
