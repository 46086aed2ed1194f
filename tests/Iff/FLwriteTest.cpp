#include "tests/Iff/Outputs.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace {

void put(_FLfile* file, const char* name, const std::string& data, bool sized = true)
{
  EXPECT_EQ(FLbgnputchunk(file, id(name), sized ? Tint32(data.size()) : -1), 0);
  EXPECT_EQ(FLput(file, data.data(), long(data.size())), long(data.size()));
  EXPECT_EQ(FLendputchunk(file), 0);
}

Outputs outputsOf(const std::function<void(_FLfile*)>& script)
{
  return Outputs([&](const char* name, const char* mode) {
    _FLfile* out = FLopen(name, mode);
    ASSERT_TRUE(out) << name << ": " << FLstrerror(flerrno);
    script(out);
    EXPECT_EQ(FLclose(out), 0) << name << ": " << FLstrerror(flerrno);
  });
}

} // namespace

TEST(FLwrite, patchesWhereItCanAndStreamsWhereItCannot)
{
  const Outputs out = outputsOf([](_FLfile* file) {
    EXPECT_EQ(FLbgnwritegroup(file, id("FORM"), id("TEST")), 0);
    put(file, "AAAA", "123");
    put(file, "BBBB", "12345", false);
    put(file, "CCCC", "", false);
    EXPECT_EQ(FLbgnwritegroup(file, id("FOR8"), id("TEST")), 0);
    put(file, "DDDD", "1");
    put(file, "EEEE", "1", false);
    EXPECT_EQ(FLendwritegroup(file), 0);
    EXPECT_EQ(FLbgnwritegroupsize(file, id("LIST"), id("TEST"), 14), 0);
    put(file, "FFFF", "1");
  }); // FLclose ends what is open
  const std::string list = form(chunk("FFFF", "1"), "LIST");
  const std::string patched = form(chunk("AAAA", "123") + header("BBBB", 5) + padded("12345", 4) + chunk("CCCC", "") +
                                     form(chunk("DDDD", "1", 8) + chunk("EEEE", "1", 8), "FOR8", 8) + list,
                                   "FORM", 4);
  EXPECT_EQ(out.file, patched);
  EXPECT_EQ(out.memory, patched);
  EXPECT_EQ(out.spooled, patched);
  // The group of 8 begins its padding with its own data: 4 + 16 + 24 + 8 bytes are 4 short of a multiple of 8.
  const std::string inner = "TEST" + chunk("DDDD", "1", 8) + header("EEEE", kStreamed) + padded("1", 8) + kEovc + kGend;
  const std::string body = "TEST" + chunk("AAAA", "123") + header("BBBB", kStreamed) + padded("12345", 4) + kEovc +
                           header("CCCC", kStreamed) + kEovc + header("FOR8", kStreamed) + padded(inner, 8) + list +
                           kGend;
  EXPECT_EQ(out.pipe, header("FORM", kStreamed) + padded(body, 4));
}

// Sizes are patched wherever the header has got to by then: in the window, flushed, and across its end.
TEST(FLwrite, patchesAcrossTheWindow)
{
  for (std::size_t before = 65536 - 40; before < 65536 + 8; ++before)
  {
    const std::string first(before - 28, 'a'), second(before % 2 ? 10 : 70000, 'b');
    const Outputs out = outputsOf([&](_FLfile* file) {
      FLbgnwritegroup(file, id("FOR4"), id("TEST"));
      put(file, "AAAA", first);
      put(file, "BBBB", second, false);
    });
    const std::string expected = form(chunk("AAAA", first, 4) + chunk("BBBB", second, 4), "FOR4");
    ASSERT_TRUE(out.file == expected && out.memory == expected && out.spooled == expected) << before;
  }
}

TEST(FLwrite, refusesWhatWouldBreakTheFile)
{
  const Scratch scratch;
  _FLfile* file = FLopen(scratch.path("out").c_str(), "w");
  ASSERT_TRUE(file);
  const auto begin = [&](const char* name, Tint32 size) { return FLbgnputchunk(file, id(name), size); };
  const auto group = [&](const char* name, Tint32 size) {
    return FLbgnwritegroupsize(file, id(name), id("TEST"), size);
  };
  const auto buffer = [&](const char* name, Tint32 size) { return FLbgnbufchunk(file, id(name), size) ? 0 : flerrno; };
  const auto data = [&](long count) { return FLput(file, "1234567890123", count) == count ? 0 : flerrno; };
  EXPECT_EQ(begin("PROP", 4), kFLbadRoot);
  EXPECT_EQ(buffer("FORM", 4), kFLbadRoot);
  EXPECT_EQ(FLbgnwritegroup(file, id("FORM"), 0x80000000), kFLbadId);
  EXPECT_EQ(group("FORM", 3), kFLbadSize);
  EXPECT_EQ(FLtell(file), 0);

  ASSERT_EQ(group("FORM", 24), 0);
  EXPECT_EQ(group("AAAA", 4), kFLbadId);
  EXPECT_EQ(begin("GEND", 0), kFLreservedId);
  EXPECT_EQ(begin("PROP", 4), kFLunexpectedBlock);
  EXPECT_EQ(begin("AAAA", 13), kFLpastBlock);
  EXPECT_EQ(buffer("AAAA", 13), kFLpastBlock);
  ASSERT_EQ(buffer("AAAA", 12), 0);
  EXPECT_EQ(FLendwritegroup(file), kFLnestedWrite);
  EXPECT_EQ(FLendbufchunk(file, -1), 0);
  EXPECT_EQ(data(1), kFLnoChunk);
  EXPECT_EQ(FLtell(file), 12);

  ASSERT_EQ(begin("AAAA", 12), 0);
  EXPECT_EQ(buffer("BBBB", 0), kFLnestedWrite);
  EXPECT_EQ(FLendwritegroup(file), kFLnestedWrite);
  EXPECT_EQ(data(13), kFLpastBlock);
  EXPECT_EQ(data(10), 0);
  EXPECT_EQ(FLendputchunk(file), kFLbadSize);
  EXPECT_EQ(FLclose(file), -1); // the group promised more
  EXPECT_EQ(flerrno, kFLbadSize);
  EXPECT_EQ(scratch.read("out").size(), 30U); // what was written is there all the same

  file = FLopen(scratch.path("out").c_str(), "w");
  ASSERT_EQ(group("FORM", 12), 0);
  EXPECT_EQ(FLbgnwritegroup(file, id("FORM"), id("TEST")), kFLpastBlock); // no room for the type
  EXPECT_EQ(FLtell(file), 12);
  FLclose(file);
}

TEST(FLwrite, buffersChunks)
{
  const Outputs out = outputsOf([](_FLfile* file) {
    FLbgnwritegroup(file, id("FOR4"), id("TEST"));
    std::memset(FLbgnbufchunk(file, id("XXXX"), 20), 'x', 20); // leaves the buffer dirty
    EXPECT_EQ(FLendbufchunk(file, -1), 0);
    std::memset(FLbgnbufchunk(file, id("AAAA"), 9), 'a', 9);
    EXPECT_EQ(FLendbufchunk(file, 10), kFLbadSize);
    EXPECT_EQ(FLendbufchunk(file, 5), 0);
    EXPECT_EQ(FLendbufchunk(file, 5), kFLnoChunk);
    std::memcpy(FLbgnbufchunk(file, id("FOR8"), 4), "TEST", 4); // brings its own alignment
    EXPECT_EQ(FLendbufchunk(file, 0), 0);
    EXPECT_EQ(FLputtypedchunk(file, id("CCCC"), 3, "cc", 0), kFLbadSize);
    FLbgnputchunk(file, id("DDDD"), 1);
    EXPECT_EQ(FLputchar(file, 'd'), 1);
    FLendputchunk(file);
    std::memcpy(FLbgnwrite(file, 8), "EEEE\0\0\0", 8);
    EXPECT_EQ(FLendwrite(file, 17), kFLbadSize);
    EXPECT_EQ(FLendwrite(file, 0), 0);
    FLendwritegroup(file);
  });
  const std::string expected =
    form(chunk("AAAA", "aaaaa", 4) + form("", "FOR8", 8) + chunk("DDDD", "d", 4) + chunk("EEEE", ""), "FOR4");
  EXPECT_EQ(out.file, expected);
  EXPECT_EQ(out.spooled, expected);
}

TEST(FLwrite, readsAndWritesInTurns)
{
  // Calls with what they give: read a byte, write, put "x" back, seek from the start and from the end.
  const char* const cases[][3] = {
    {"r+", "<0 >ab <3 @8 >yzZ", "0ab34567yzZ"},
    {"w+", ">0123456789 @2 <2 ^ >ab <4 $1 >z", "01ab45678z"}, // what was put back is gone with the switch
    {"w", ">0123456789 $4 >ab $0 >!", "012345ab89!"},         // the end is where it was
  };
  for (const auto& [mode, calls, left] : cases)
  {
    const Scratch scratch;
    _FLfile* file = FLopen(scratch.write("file", "0123456789").c_str(), mode);
    std::istringstream words(calls);
    for (std::string word; words >> word;)
    {
      SCOPED_TRACE(mode + (" " + word));
      char byte = 0;
      switch (word[0])
      {
      case '<': EXPECT_TRUE(FLread(file, &byte, 1) == 1 && byte == word[1]) << byte; break;
      case '>': EXPECT_EQ(FLwrite(file, &word[1], long(word.size() - 1)), long(word.size() - 1)); break;
      case '^': EXPECT_EQ(FLunread(file, "x", 1), 0); break;
      default: EXPECT_EQ(FLseek(file, word[1] - '0', word[0] == '@' ? 0 : 2), 0);
      }
    }
    // The letter of the mode tells what may be done with chunks.
    EXPECT_EQ(FLbgnget(file, nullptr, nullptr), *mode == 'w' ? kFLbadMode : kFLend);
    EXPECT_EQ(FLendrgroup(file), *mode == 'w' ? kFLbadMode : kFLnoGroup);
    EXPECT_EQ(FLclose(file), 0);
    EXPECT_EQ(scratch.read("file"), left);
  }
}
