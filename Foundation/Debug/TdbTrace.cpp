#include "Foundation/Debug/TdbTrace.h"

#include "Foundation/Debug/TdebugOutput.h"
#include "Foundation/Platform/Signals.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

using namespace std::string_view_literals;

namespace {

volatile std::sig_atomic_t gSignalled = 0;

// In memory that nothing destroys: channels of other modules come and go until the process ends.
TdbTraceArray& registry()
{
  alignas(TdbTraceArray) static unsigned char storage[sizeof(TdbTraceArray)];
  static TdbTraceArray& channels = *new (storage) TdbTraceArray;
  return channels;
}

// Calls `action` for each channel of which `condition` holds and returns their number. Channels may come and go
// meanwhile, since what outputs do is not known here.
template <class Condition, class Action>
long forEach(Condition condition, Action action)
{
  TdbTraceArray& channels = registry();
  long count = 0;
  for (unsigned int i = 0; i < channels.length();)
  {
    TdbTrace* channel = channels[i];
    if (condition(*channel))
    {
      ++count;
      action(*channel);
    }
    if (i < channels.length() && channels[i] == channel) // otherwise the next one has moved up here
      ++i;
  }
  return count;
}

// The name of an output in a listing.
struct Name
{
  explicit Name(TdebugOutput* output)
  {
    if (output)
      output->getName(text);
  }
  char text[TdebugOutput::kNameSize] = "none";
};

const char* truth(unsigned char value)
{
  return value ? "TRUE" : "FALSE";
}

// Takes what stands before the next of `separators` off `text`, and the separator with it.
std::string_view cut(std::string_view& text, const char* separators)
{
  const std::size_t end = std::min(text.find_first_of(separators), text.size());
  const std::string_view piece = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return piece;
}

// Does one keyword; false for one that is none.
bool obey(std::string_view keyword)
{
  const bool hasArguments = keyword.find(':') != std::string_view::npos;
  std::string_view arguments = keyword;
  const std::string_view verb = cut(arguments, ":");
  if (verb == "mark"sv)
  {
    const Tstring text(arguments);
    TdbTrace::sShowMark(0, "", hasArguments ? text.asC() : nullptr);
    return true;
  }

  const std::string_view number = hasArguments ? cut(arguments, ":") : std::string_view();
  short level = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), level);
  if (!number.empty() && (error != std::errc() || end != number.data() + number.size()))
    return false;
  const Tstring key(hasArguments ? arguments : std::string_view());
  if (key.empty() && hasArguments && !arguments.empty())
    return true; // no memory: an empty key would mean all
  if (verb == "on"sv || verb == "off"sv)
    TdbTrace::sSetStatus(level, key, verb == "on"sv);
  else if (verb == "show"sv)
    TdbTrace::sShowStatus(level, key, 1);
  else
    return false;
  return true;
}

} // namespace

TdbTrace::TdbTrace(short level, const char* key, TdebugOutput* output, unsigned char ownsOutput)
  : TdbTrace(level, Tstring(key), output, ownsOutput)
{
}

// NOLINTNEXTLINE(modernize-pass-by-value): sharing costs no more than moving
TdbTrace::TdbTrace(short level, const Tstring& key, TdebugOutput* output, unsigned char ownsOutput)
  : fKey(key)
  , fOutput(output)
  , fLevel(level)
  , fOwnsOutput(ownsOutput)
{
  registry().addLast(this);
}

TdbTrace::~TdbTrace()
{
  registry().remove(this);
  releaseOutput();
}

// Deletes an output of one's own unless another channel owns it too.
void TdbTrace::releaseOutput()
{
  if (!fOwnsOutput || !fOutput)
    return;
  TdebugOutput* output = std::exchange(fOutput, nullptr);
  const auto shares = [output](const TdbTrace& other) { return other.fOutput == output; };
  if (forEach([&](const TdbTrace& other) { return shares(other) && other.fOwnsOutput; }, [](TdbTrace&) {}) != 0)
    return;
  forEach(shares, [](TdbTrace& other) { other.fOutput = nullptr; });
  delete output;
}

void TdbTrace::setOutput(TdebugOutput* output, unsigned char ownsOutput)
{
  if (output != fOutput)
    releaseOutput();
  fOutput = output;
  fOwnsOutput = ownsOutput;
}

int TdbTrace::compare(const TdbTrace& left, const TdbTrace& right) noexcept
{
  const int byKey = left.fKey.compare(right.fKey);
  return byKey != 0 ? byKey : left.fLevel - right.fLevel;
}

bool TdbTrace::matches(short level, const Key& key) const noexcept
{
  return (level <= 0 || fLevel <= level) && (key.text().empty() || key.text() == fKey);
}

void TdbTrace::sInitialize()
{
  registry();
}

long TdbTrace::sGetMatches(TdbTraceArray& out, short level, const Key& key)
{
  sCheckSignal();
  return forEach([=](const TdbTrace& channel) { return channel.matches(level, key); },
                 [&out](TdbTrace& channel) { out.addLast(&channel); });
}

long TdbTrace::sSetStatus(short level, const Key& key, unsigned char on)
{
  sCheckSignal();
  on = on != 0;
  return forEach([=](const TdbTrace& channel) { return channel.matches(level, key); },
                 [on](TdbTrace& channel) {
                   if (channel.fStatus == on)
                     return;
                   TdebugOutput::sCout().printNoIndent("Changed status of %d %s from %s to %s\n", channel.fLevel,
                                                       channel.fKey.asC(), truth(channel.fStatus), truth(on));
                   channel.fStatus = on;
                 });
}

long TdbTrace::sSetOutput(short level, const Key& key, TdebugOutput* output, unsigned char ownsOutput)
{
  sCheckSignal();
  return forEach([=](const TdbTrace& channel) { return channel.matches(level, key); },
                 [=](TdbTrace& channel) {
                   TdebugOutput::sCout().printNoIndent("Changed output of %d %s from %s to %s\n", channel.fLevel,
                                                       channel.fKey.asC(), Name(channel.fOutput).text,
                                                       Name(output).text);
                   channel.setOutput(output, ownsOutput);
                 });
}

long TdbTrace::sShowStatus(short level, const Key& key, unsigned char withOutputs)
{
  sCheckSignal();
  const auto matches = [=](const TdbTrace& channel) { return channel.matches(level, key); };
  TdebugOutput& out = TdebugOutput::sCout();
  const long count = forEach(matches, [](TdbTrace&) {});
  const std::string_view shown = key.text();
  out.printNoIndent("%ld trace objects of %u matching (%d, %.*s)\n", count, registry().length(), level,
                    int(std::min(shown.size(), std::size_t(INT_MAX))), shown.data());
  for (const bool status : {true, false})
  {
    out.printNoIndent(status ? "Traces Turned On\n===============\n{\n" : "Traces Turned Off\n================\n{\n");
    forEach([=](const TdbTrace& channel) { return matches(channel) && (channel.fStatus != 0) == status; },
            [&out, withOutputs](TdbTrace& channel) {
              out.printNoIndent("   %d %s", channel.fLevel, channel.fKey.asC());
              if (withOutputs)
                out.printNoIndent(" to %s", Name(channel.fOutput).text);
              out.printNoIndent("\n");
            });
    out.printNoIndent("}\n");
  }
  return count;
}

long TdbTrace::sShowMark(short level, const Key& key, const char* text)
{
  sCheckSignal();
  return forEach([=](const TdbTrace& channel) { return channel.matches(level, key); },
                 [text](TdbTrace& channel) {
                   if (channel.fOutput)
                     channel.fOutput->printMark(text);
                 });
}

long TdbTrace::sPrintMarker(short level, const Key& key, const Tstring& text)
{
  return sShowMark(level, key, text.asC());
}

void TdbTrace::sSignalHandler()
{
  const char* variable = std::getenv("VEXA_DEBUG_KEYWORDS");
  const Tstring keywords(variable); // what a keyword calls may change the environment
  std::string_view rest = keywords;
  while (!rest.empty())
  {
    const std::string_view keyword = cut(rest, " \t\n,");
    if (!keyword.empty() && !obey(keyword))
      std::fprintf(stderr, "Unrecognized debug keyword '%.*s'\n", int(keyword.size()), keyword.data());
  }
}

unsigned char TdbTrace::sInstallSignalHandler()
{
#ifdef SIGUSR2
  return Platform::installHandler(
    SIGUSR2, [](int) { gSignalled = 1; }, nullptr);
#else
  return 0;
#endif
}

void TdbTrace::sCheckSignal()
{
  static bool obeying = false; // what the keywords call comes here too, and may take longer than signals do
  if (!gSignalled || obeying)
    return;
  gSignalled = 0;
  struct Turn // outputs may throw
  {
    Turn() { obeying = true; }
    ~Turn() { obeying = false; }
  } const turn;
  sSignalHandler();
}
