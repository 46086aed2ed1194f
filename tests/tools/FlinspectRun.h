// Runs flinspect as a process, and builds the files it is run on.

#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

struct Result
{
  int status;
  std::string out;
  std::string err;
};

inline std::string contents(const std::filesystem::path& path)
{
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Texts with zero bytes in them.
template <std::size_t Size>
std::string raw(const char (&text)[Size])
{
  return {text, Size - 1};
}

inline std::string word(unsigned value)
{
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
          static_cast<char>(value)};
}

inline std::string header(const std::string& id, std::size_t size)
{
  return id + word(static_cast<unsigned>(size));
}

inline std::string chunk(const std::string& id, const std::string& data, std::size_t alignment = 2)
{
  return header(id, data.size()) + data + std::string((0 - data.size()) % alignment, '\0');
}

class FlinspectTest : public testing::Test
{
protected:
  FlinspectTest()
  {
    fScratch = std::filesystem::temp_directory_path() / ("flinspect-test-" + std::to_string(std::random_device()()));
    std::filesystem::create_directory(fScratch);
  }

  ~FlinspectTest() override { std::filesystem::remove_all(fScratch); }

  std::string scratch() const { return fScratch.string(); }
  std::string scratch(const std::string& name) const { return (fScratch / name).string(); }

  std::string write(const std::string& name, const std::string& bytes) const
  {
    std::ofstream(scratch(name), std::ios::binary) << bytes;
    return scratch(name);
  }

  static std::string quote(const std::string& text)
  {
#ifdef _WIN32
    return '"' + text + '"';
#else
    return '\'' + text + '\'';
#endif
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
    const std::string to = " > " + quote(scratch(".out")) + " 2> " + quote(scratch(".err"));
#ifdef _WIN32
    const int status = std::system(('"' + line + to + '"').c_str());
#else
    const int wait = std::system(('(' + line + ')' + to).c_str());
    const int status = WIFEXITED(wait) ? WEXITSTATUS(wait) : -1;
#endif
    return {status, contents(scratch(".out")), contents(scratch(".err"))};
  }

#ifdef _WIN32
  static constexpr const char* kNull = "NUL";
#else
  static constexpr const char* kNull = "/dev/null";
#endif

private:
  std::filesystem::path fScratch;
};
