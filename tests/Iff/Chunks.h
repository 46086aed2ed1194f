/// \file
/// Makes chunk files in memory and tells what the engine reads in them.

#pragma once

#include "Foundation/Iff/FL.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

/// "FORM" as the engine's number.
constexpr TuInt32 id(std::string_view text)
{
  TuInt32 value = 0;
  for (char c : text)
    value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

inline std::string text(TuInt32 value)
{
  return {char(value >> 24), char(value >> 16 & 255), char(value >> 8 & 255), char(value & 255)};
}

/// A header, its size as it stands.
inline std::string header(std::string_view name, Tint64 size)
{
  return std::string(name) + text(TuInt32(size));
}

inline std::string padded(std::string bytes, std::size_t align)
{
  bytes.append((align - bytes.size() % align) % align, '\0');
  return bytes;
}

/// A chunk or group with its exact size, padded to align.
inline std::string chunk(std::string_view name, const std::string& data, std::size_t align = 2)
{
  return header(name, Tint64(data.size())) + padded(data, align);
}

/// A group of type TEST, and the beginning of one with its size as it stands.
inline std::string form(const std::string& content, std::string_view name = "FORM", std::size_t align = 2)
{
  return chunk(name, "TEST" + content, align);
}

inline std::string begun(Tint64 size, std::string_view name = "FORM")
{
  return header(name, size) + "TEST";
}

/// An unknown size; the marks differ in the last digit.
constexpr Tint64 kUnknown = 0x80000000;
constexpr Tint64 kPatched = 0x80000001;
constexpr Tint64 kStreamed = 0x80000002;

const std::string kGend = header("GEND", 0);
const std::string kEovc = header("EOVC", kUnknown);
const std::string kCvoe = header("CVOE", kUnknown);

/// A folder of its own that is removed with the object.
class Scratch
{
public:
  Scratch() { std::filesystem::create_directory(fFolder); }
  Scratch(Scratch&&) = delete;
  ~Scratch()
  {
    std::error_code ignored;
    std::filesystem::remove_all(fFolder, ignored);
  }

  std::string path(const std::string& name) const { return (fFolder / name).string(); }

  std::string write(const std::string& name, const std::string& bytes) const
  {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }

  std::string read(const std::string& name) const
  {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

private:
  std::filesystem::path fFolder =
    std::filesystem::temp_directory_path() / ("test" + std::to_string(std::random_device()()));
};

/// The name under which FLopen finds the bytes in memory.
inline std::string memoryName(const void* bytes, std::size_t size)
{
  return "mem:" + std::to_string(reinterpret_cast<std::size_t>(bytes)) + "," + std::to_string(size);
}

/// Walks the file and writes down what it meets: groups as "FORM:TYPE[…]", chunks as "NAME=data", an error as "!code"
/// (the walk then goes on behind the group), the end as ".". Of a size that is unknown or too long to be true, 4 bytes.
inline std::string walk(_FLfile* file)
{
  std::string out;
  for (int depth = 0;;)
  {
    TuInt32 name = 0, type = 0;
    Tint32 size = 0;
    int status = FLbgnget(file, &name, &size);
    if (status == kFLgroupHeader && (status = FLbgnreadgroup(file, &type, &size)) == 0)
    {
      out += text(name) + ":" + text(type) + "[";
      ++depth;
      continue;
    }
    if (status == kFLok)
    {
      std::string data(std::size_t(size < 0 || size > 1000000 ? 4 : size), '\0');
      data.resize(std::size_t(FLget(file, data.data(), long(data.size()))));
      out += text(name) + "=" + data + " ";
      status = FLendget(file);
      if (status == 0)
        continue;
    }
    if (status != kFLend)
      out += "!" + std::to_string(status);
    if (depth-- == 0)
      return out + (status == kFLend ? "." : "");
    status = FLendrgroup(file);
    out += "]" + (status == 0 ? "" : "!" + std::to_string(status));
  }
}

/// What the walk meets and how closing goes, or why there is no file.
inline std::string readAll(_FLfile* file)
{
  if (!file)
    return "not opened: " + std::to_string(flerrno);
  const std::string found = walk(file);
  return found + (FLclose(file) == 0 ? "" : " close " + std::to_string(flerrno));
}
