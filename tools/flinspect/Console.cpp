#include "Console.h"

#include "Terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t kBlock = 0x10000;
constexpr auto kFirstBar = std::chrono::milliseconds(500);
constexpr auto kNextBar = std::chrono::milliseconds(100);

} // namespace

Failure::Failure(std::string_view subject, std::string_view text)
  : std::runtime_error(std::string(subject).append(": ").append(text))
{
}

Console::Console()
  : fNextBar(Clock::now() + kFirstBar)
{
  fBuffer.reserve(2 * kBlock);
}

void Console::put(std::string_view text)
{
  fBuffer += text;
  if (fBuffer.size() >= kBlock)
    flush();
}

void Console::put(Tint64 number, int width)
{
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  const auto length = static_cast<std::size_t>(end - digits.data());
  if (length < static_cast<std::size_t>(width))
    fBuffer.append(static_cast<std::size_t>(width) - length, ' ');
  put(std::string_view(digits.data(), length));
}

void Console::flush()
{
  const std::size_t written = std::fwrite(fBuffer.data(), 1, fBuffer.size(), stdout);
  const bool complete = written == fBuffer.size() && std::fflush(stdout) == 0;
  fBuffer.clear(); // what failed once is not tried again by a later flush
  if (!complete)
    throw OutputFailure("standard output", std::strerror(errno));
}

void Console::complain(std::string_view text)
{
  flush();
  endProgress();
  const std::string line = "flinspect: " + printable(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Console::allowProgress(bool quiet)
{
  fProgressAllowed = isTerminal(2) && (quiet || !isTerminal(1));
}

void Console::progress(Tint64 done, Tint64 total)
{
  if (!fProgressAllowed || Clock::now() < fNextBar)
    return;
  fNextBar = Clock::now() + kNextBar;
  std::array<char, 48> amount;
  std::snprintf(amount.data(), amount.size(), "%.1f MB", static_cast<double>(done) / 1e6);
  std::string line = "\r";
  if (total > 0)
  {
    const int width = std::clamp(terminalWidth(2) - 24, 0, 50);
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const auto filled = static_cast<std::size_t>(share * width);
    line += '[' + std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '-') + "] ";
    line += std::to_string(static_cast<int>(share * 100)) + "% ";
  }
  line += amount.data();
  line += "\x1b[K";
  std::fwrite(line.data(), 1, line.size(), stderr);
  fBarShown = true;
}

void Console::endProgress()
{
  if (fBarShown)
    std::fputs("\r\x1b[K", stderr);
  fBarShown = false;
}

std::string printable(std::string_view text)
{
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i)
  {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F are control characters as well; in UTF-8 they begin with 0xC2.
    const bool wide = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (byte >= 0x20 && byte != 0x7F && !wide)
    {
      result += text[i];
      continue;
    }
    std::array<char, 5> code;
    std::snprintf(code.data(), code.size(), "\\x%02X", byte);
    result += code.data();
  }
  return result;
}
