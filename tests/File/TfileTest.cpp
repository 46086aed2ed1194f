#include "Foundation/File/Tfile.h"
#include "Foundation/Data/Tmetaclass.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <tuple>
#include <utility>
#include <vector>

namespace {

// Pieces of any size, some longer than the buffer, come back in pieces of other sizes.
TEST(Tfile, GivesBackWhatItTook)
{
  const Scratch scratch;
  const Tstring path(scratch.path("bytes"));
  std::mt19937 random(7);
  const auto bytes = [&random](std::size_t limit) {
    std::string piece(random() % limit, '\0');
    for (char& c : piece)
      c = "\0a\r\n"[random() % 4];
    return piece;
  };
  std::string model;
  for (const char* mode : {"w", "ab"})
  {
    Tfile file(path, mode);
    for (int i = 0; i < 300; ++i)
    {
      const std::string piece = bytes(i % 50 ? 2000 : 200000);
      ASSERT_TRUE(file.write(piece.data(), piece.size()) && (random() % 8 || file.flush()));
      model += piece;
    }
    char c;
    EXPECT_TRUE(file.read(&c, 1) == 0 && !file.put("more") && !file.close() && file.error() == EBADF);
  }
  Tfile file(path, "rb"), reader;
  reader = std::move(file);
  EXPECT_FALSE(file.isOpen()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): is a new one
  for (std::size_t at = 0; at != model.size();)
  {
    ASSERT_FALSE(reader.isAtEnd());
    std::string piece = bytes(100000);
    piece.resize(reader.read(piece.data(), piece.size()));
    ASSERT_EQ(model.compare(at, piece.size(), piece), 0);
    at += piece.size();
  }
  EXPECT_TRUE(reader.isAtEnd() && reader.close());
  EXPECT_TRUE(reader.typeof() == Tmetaclass::findClass("file") && reader.cast(reader.typeof()) == &reader);
}

TEST(Tfile, ReadsLines)
{
  const Scratch scratch;
  const std::string longest(65535, 'x'); // the '\n' of a "\r\n" begins the second buffer
  const std::pair<std::string, std::vector<std::string>> cases[] = {
    {"", {}},
    {"\n\r\n\r", {"", "", "\r"}},
    {"a\rb\r\r\nc", {"a\rb\r", "c"}},
    {longest + "\r\nend\n", {longest, "end"}},
    {std::string("\0\n\0", 3), {std::string(1, '\0'), std::string(1, '\0')}},
  };
  for (const auto& [bytes, lines] : cases)
  {
    Tfile file(Tstring(scratch.write("lines", bytes)), "r");
    Tstring line;
    for (const std::string& expected : lines)
      EXPECT_TRUE(file.readLine(line) && line == expected) << line;
    EXPECT_TRUE(!file.readLine(line) && line.empty() && file.close());
    EXPECT_TRUE(file.open(file.name(), "r") && file.readAll(line) && line == bytes);
  }
}

TEST(Tfile, SaysWhatFailed)
{
  const Scratch scratch;
  const Tstring folder(scratch.path("")), file(scratch.write("file", "text"));
  const std::tuple<Tstring, const char*, int> cases[] = {
    {folder, "r", EISDIR},         {folder, "w", EISDIR},
    {file + ".none", "r", ENOENT}, {file, "", EINVAL},
    {file, nullptr, EINVAL},       {file, "w+", EINVAL},
    {file, "rbx", EINVAL},         {file + Tstring("\0", 1), "w", EINVAL}};
  for (const auto& [name, mode, error] : cases)
  {
    Tfile opened(name, mode);
    EXPECT_FALSE(opened.isOpen() || opened.close());
    EXPECT_EQ(opened.error(), error) << name;
  }
  EXPECT_EQ(scratch.read("file"), "text");

#ifdef __linux__
  Tfile full("/dev/full", "w");
  EXPECT_TRUE(full.put("buffered") && !full.flush() && !full.put("x") && !full.open(file, "r"));
  EXPECT_TRUE(!full.isOpen() && full.error() == ENOSPC && full.name() == "/dev/full");
#endif
#if FAILING_MEMORY
  const std::string bytes(1000, 'x'); // strings keep blocks for shorter ones
  const Tstring longer(scratch.write("longer", bytes));
  EXPECT_GT(forEachFailingAllocation([&] {
              Tfile reader(longer, "r");
              Tstring line;
              EXPECT_TRUE(reader.readLine(line) ? line == bytes : reader.error() == ENOMEM && line.empty());
            }),
            2);
#endif
}

} // namespace
