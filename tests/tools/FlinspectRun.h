// Runs flinspect as a process.

#pragma once

#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

struct Result
{
  int status;
  std::string out, err;
};

class FlinspectTest : public testing::Test, protected Scratch
{
protected:
#ifdef _WIN32
  static constexpr const char *kQuote = "\"", *kNull = "NUL";
#else
  static constexpr const char *kQuote = "'", *kNull = "/dev/null";
#endif

  static std::string quote(const std::string& text)
  {
    return kQuote + text + kQuote;
  }

  // Runs flinspect with `arguments`, standard input from the file `input`.
  Result run(const std::vector<std::string>& arguments, const std::string& input = {}) const
  {
    std::string line = quote(std::filesystem::path(FLINSPECT).make_preferred().string());
    for (const std::string& argument : arguments)
      line += ' ' + quote(argument);
    return shell(line + " < " + (input.empty() ? kNull : quote(input)));
  }

  Result shell(const std::string& line) const
  {
    const std::string to = " > " + quote(path(".out")) + " 2> " + quote(path(".err"));
#ifdef _WIN32
    const int status = std::system(('"' + line + to + '"').c_str());
#else
    const int wait = std::system(('(' + line + ')' + to).c_str());
    const int status = WIFEXITED(wait) ? WEXITSTATUS(wait) : -1;
#endif
    return {status, read(".out"), read(".err")};
  }
};
