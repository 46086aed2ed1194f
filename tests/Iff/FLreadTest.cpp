#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace std::string_literals;

// Names for every way of reading the same bytes.
std::vector<std::string> ways(const Scratch& scratch, const std::string& bytes)
{
  const std::string path = scratch.write("file", bytes);
  return {path, "mmap:" + path, memoryName(bytes.data(), bytes.size()), std::string("pipe:") + FLRCP + " x:" + path};
}

struct Case
{
  const char* what;
  std::string bytes;
  std::string expected;
  std::string fromMemory = expected; // where it differs: positions may lie behind the end,
  std::string fromPipe = expected;   // or are never gone back to
};

const Case kCases[] = {
  {"empty file", "", "."},
  {"header cut off", "FORM\0\0"s, "."},
  {"padding to 4", form(chunk("AAAA", "12345", 4) + chunk("BBBB", ""), "FOR4"), "FOR4:TEST[AAAA=12345 BBBB= ]."},
  {"padding to 8 is inherited", form(form(chunk("AAAA", "12345", 8) + chunk("BBBB", "1", 8), "FORM", 8), "FOR8", 8),
   "FOR8:TEST[FORM:TEST[AAAA=12345 BBBB=1 ]]."},
  {"a group is padded by its own alignment", form(form("", "FOR8", 8) + form("", "FOR8", 8)),
   "FORM:TEST[FOR8:TEST[]FOR8:TEST[]]."},
  {"list with properties", form(form(chunk("AAAA", "1"), "PROP") + form("", "CAT ") + form(""), "LIST"),
   "LIST:TEST[PROP:TEST[AAAA=1 ]CAT :TEST[]FORM:TEST[]]."},
  {"properties in a form", form(form("", "PROP")), "FORM:TEST[!14]."},
  {"properties at the root", form("", "PROP"), "!12"},
  {"a root of illegal size", begun(0x80000004), "!12"},
  {"reserved ids", form(chunk("FOR7", "")), "FORM:TEST[!34]."},
  {"not quite reserved", form(chunk("FORX", "1") + chunk("LIS ", "2")), "FORM:TEST[FORX=1 LIS =2 ]."},
  {"nobody implements these", form(chunk("PATH", "")) + form(chunk("INCL", "")), "FORM:TEST[!10]FORM:TEST[!10]."},
  {"7 bytes left", form("AAAA\0\0\0"s), "FORM:TEST[!5]."},
  {"pad byte outside the group", chunk("FORM", "TEST" + header("AAAA", 1) + "1") + form(""),
   "FORM:TEST[AAAA=1 !5]FORM:TEST[]."},
  {"size that wraps", form(header("AAAA", 0x7FFFFFFF)), "FORM:TEST[!16]."},
  {"illegal mark", form(header("AAAA", 0x80000004)), "FORM:TEST[!16]."},
  {"group without room for its type", form(chunk("LIST", "TES")), "FORM:TEST[!16]."},
  {"group cut off before its type", header("FORM", 100) + "TE", "!8"},
  {"last pad byte missing", begun(13) + header("AAAA", 1) + "1", "FORM:TEST[AAAA=1 !40]!40.", "FORM:TEST[AAAA=1 !5].",
   "FORM:TEST[AAAA=1 !13]!13."},
  {"data cut off", begun(100) + header("AAAA", 80) + "1234", "FORM:TEST[AAAA=1234 !40]!40.", "FORM:TEST[AAAA=1234 ].",
   "FORM:TEST[AAAA=1234 !13]!13."},
  {"streamed", begun(kStreamed) + begun(kUnknown) + chunk("AAAA", "123") + kGend + kGend + form(""),
   "FORM:TEST[FORM:TEST[AAAA=123 ]]FORM:TEST[]."},
  {"streamed, ended by the file", begun(kStreamed) + chunk("AAAA", "123"), "FORM:TEST[AAAA=123 ]."},
  {"unknown size takes the end from GEND", begun(kPatched, "FOR4") + kGend + form(""), "FOR4:TEST[]FORM:TEST[]."},
  {"end mark behind a group", begun(kStreamed, "FOR4") + kGend + kEovc + form(""), "FOR4:TEST[]FORM:TEST[]."},
  {"known size and GEND differ", form(kGend + chunk("AAAA", "")), "FORM:TEST[!19]."},
  {"GEND with a size", begun(kStreamed) + header("GEND", 4) + "1234", "FORM:TEST[!18]!18!12"},
  {"streamed chunk ends at the mirrored mark",
   form(header("AAAA", kStreamed) + "1234" + "CVOE" + kCvoe + chunk("BBBB", "1")), "FORM:TEST[AAAA=1234 BBBB=1 ]."},
  {"streamed chunk does not end at EOVC", form(header("AAAA", kStreamed) + "1234" + kEovc),
   "FORM:TEST[AAAA=1234 !15]."},
  {"chunk still being written", form(header("AAAA", kPatched) + "1234"), "FORM:TEST[AAAA=1234 !27].",
   "FORM:TEST[AAAA=1234 !27].", "FORM:TEST[AAAA=1234 !16]."},
};

} // namespace

TEST(FLread, walksByTheRules)
{
  const Scratch scratch;
  for (const Case& one : kCases)
  {
    const std::string expected[] = {one.expected, one.fromMemory, one.fromMemory, one.fromPipe};
    const std::vector<std::string> names = ways(scratch, one.bytes);
    for (std::size_t way = 0; way < names.size(); ++way)
      EXPECT_EQ(readAll(FLopen(names[way].c_str(), "r")), expected[way]) << one.what << " from " << names[way];
  }
}

TEST(FLread, getsDataInPiecesAndNoFurther)
{
  const std::string kLong(100000, 'b');
  const std::string bytes = form(chunk("AAAA", "1234567") + chunk("BBBB", kLong) + chunk("CCCC", "c"));
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    SCOPED_TRACE(name);
    _FLfile* file = FLopen(name.c_str(), "r");
    ASSERT_TRUE(file);
    char buffer[16] = {};
    EXPECT_EQ(FLget(file, buffer, 1), 0);
    EXPECT_EQ(flerrno, kFLnoChunk);
    EXPECT_EQ(FLgetchunk(file, nullptr, nullptr), nullptr);
    EXPECT_EQ(flerrno, kFLnoGroup);
    ASSERT_EQ(FLbgnreadgroup(file, nullptr, nullptr), 0);
    EXPECT_EQ(FLbgnreadgroup(file, nullptr, nullptr), kFLchunkHeader);
    EXPECT_EQ(FLget(file, buffer, 3), 3);
    EXPECT_EQ(FLget(file, buffer + 3, 13), 4);
    EXPECT_EQ(flerrno, kFLpastBlock);
    EXPECT_STREQ(buffer, "1234567");
    EXPECT_EQ(FLbgnread(file, 1), nullptr);
    EXPECT_EQ(FLbgnread(file, -1), nullptr);
    EXPECT_EQ(flerrno, kFLbadSize);
    EXPECT_EQ(FLendget(file), 0);
    EXPECT_EQ(FLendget(file), 0); // nothing pending

    TuInt32 name2 = 0;
    Tint32 size = 0;
    const void* data = FLgetchunk(file, &name2, &size);
    ASSERT_TRUE(data);
    EXPECT_EQ(text(name2) + std::string(static_cast<const char*>(data), std::size_t(size)), "BBBB" + kLong);
    // Only a pipe does not know where it ends.
    const bool pipe = name.compare(0, 5, "pipe:") == 0;
    const Tint64 here = FLtell(file);
    EXPECT_EQ(FLseek(file, 4, 2), pipe ? kFLunknownSize : 0);
    EXPECT_EQ(FLtell(file), pipe ? here : Tint64(bytes.size()) - 4);
    EXPECT_NE(FLseek(file, -1, 0), 0);
    EXPECT_NE(FLseek(file, 0x7FFFFFFFFFFFFFFF, 1), 0);
    EXPECT_EQ(FLclose(file), 0);
  }
}

// What is claimed is not allocated before it comes.
TEST(FLread, believesNoSize)
{
  const std::string bytes = begun(0x7FFFFFE0) + header("AAAA", 0x7FFFFF00) + "1234";
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    _FLfile* file = FLopen(name.c_str(), "r");
    ASSERT_EQ(FLbgnreadgroup(file, nullptr, nullptr), 0) << name;
    EXPECT_EQ(FLgetchunk(file, nullptr, nullptr), nullptr) << name;
    EXPECT_EQ(flerrno, kFLbadSize) << name;
    EXPECT_EQ(FLclose(file), 0) << name;
  }
}

TEST(FLread, findsTheSizesOfOldChunks)
{
  const std::string bytes =
    form(header("FRAM", 1) + "123456" + header("SHAP", 0x7FFFFFFF) + "12" + header("GRUP", 2) + "ab");
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    EXPECT_EQ(readAll(FLopen(name.c_str(), "rl")), "FORM:TEST[FRAM=123456 SHAP=12 GRUP=ab ].") << name;
    EXPECT_EQ(readAll(FLopen(name.c_str(), "r")).substr(0, 17), "FORM:TEST[FRAM=1 ") << name;
  }
}
