#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

namespace {

// Every way of reading the same bytes. Each name is opened; "|" stands for a pipe.
std::vector<std::string> ways(const Scratch& scratch, const std::string& bytes)
{
  const std::string path = scratch.write("file", bytes);
  return {path, "mmap:" + path, memoryName(bytes.data(), bytes.size()), std::string("pipe:") + FLRCP + " x:" + path};
}

std::string read(const std::string& name, const char* mode = "r")
{
  _FLfile* file = FLopen(name.c_str(), mode);
  if (!file)
    return "not opened: " + std::to_string(flerrno);
  const std::string found = walk(file);
  return found + (FLclose(file) == 0 ? "" : " close " + std::to_string(flerrno));
}

struct Case
{
  const char* what;
  std::string bytes;
  std::string expected;
  std::string fromMemory = expected; // where it differs: positions may lie behind the end,
  std::string fromPipe = expected;   // or are never gone back to
};

std::string form(const std::string& body, const char* name = "FORM")
{
  return chunk(name, "TEST" + body, 1);
}

const Case kCases[] = {
  {"empty file", "", "."},
  {"header cut off", "FORM\0\0", "."},
  {"several roots", form("") + form(""), "FORM:TEST[]FORM:TEST[]."},
  {"padding to 2", form(chunk("AAAA", "12345") + chunk("BBBB", "")), "FORM:TEST[AAAA=12345 BBBB= ]."},
  {"padding to 4", form(chunk("AAAA", "12345", 4) + chunk("BBBB", ""), "FOR4"), "FOR4:TEST[AAAA=12345 BBBB= ]."},
  {"padding to 8 is inherited",
   chunk("FOR8", "TEST" + chunk("FORM", "TEST" + chunk("AAAA", "12345", 8) + chunk("BBBB", "1", 8), 8), 8),
   "FOR8:TEST[FORM:TEST[AAAA=12345 BBBB=1 ]]."},
  {"a group is padded by its own alignment", form(padded(form("", "FOR8"), 8) + padded(form("", "FOR8"), 8)),
   "FORM:TEST[FOR8:TEST[]FOR8:TEST[]]."},
  {"list with properties",
   chunk("LIST", "TEST" + chunk("PROP", "TEST" + chunk("AAAA", "1")) + chunk("CAT ", "TEST") + form("")),
   "LIST:TEST[PROP:TEST[AAAA=1 ]CAT :TEST[]FORM:TEST[]]."},
  {"properties in a form", form(chunk("PROP", "TEST")), "FORM:TEST[!14]."},
  {"properties in a concatenation", chunk("CAT ", "TEST" + chunk("PROP", "TEST")), "CAT :TEST[!14]."},
  {"properties at the root", chunk("PROP", "TEST"), "!12"},
  {"a plain chunk at the root", chunk("AAAA", ""), "!12"},
  {"a root of illegal size", header("FORM", 0x80000004) + "TEST", "!12"},
  {"reserved ids", form(chunk("FOR7", "")), "FORM:TEST[!34]."},
  {"reserved id at the root", chunk("CAT9", "TEST"), "!34"},
  {"not quite reserved", form(chunk("FORX", "1") + chunk("LIS ", "2")), "FORM:TEST[FORX=1 LIS =2 ]."},
  {"nobody implements these", form(chunk("PATH", "")) + form(chunk("INCL", "")), "FORM:TEST[!10]FORM:TEST[!10]."},
  {"7 bytes left", form("AAAA\0\0\0"), "FORM:TEST[!5]."},
  {"pad byte outside the group", chunk("FORM", "TEST" + header("AAAA", 1) + "1") + form(""),
   "FORM:TEST[AAAA=1 !5]FORM:TEST[]."},
  {"child past its parent", form(header("AAAA", 1)), "FORM:TEST[!16]."},
  {"size that wraps", form(header("AAAA", 0x7FFFFFFF)), "FORM:TEST[!16]."},
  {"illegal mark", form(header("AAAA", 0x80000004)), "FORM:TEST[!16]."},
  {"group without room for its type", form(chunk("LIST", "TES")), "FORM:TEST[!16]."},
  {"group cut off before its type", header("FORM", 100) + "TE", "!8"},
  {"last pad byte missing", form(header("AAAA", 1) + "1"), "FORM:TEST[AAAA=1 !40]!40.", "FORM:TEST[AAAA=1 !5].",
   "FORM:TEST[AAAA=1 !13]!13."},
  {"data cut off", header("FORM", 100) + "TEST" + header("AAAA", 80) + "1234", "FORM:TEST[AAAA=1234 !40]!40.",
   "FORM:TEST[AAAA=1234 ].", "FORM:TEST[AAAA=1234 !13]!13."},
  {"streamed",
   header("FORM", kStreamed) + "TEST" + header("FORM", kUnknown) + "TEST" + chunk("AAAA", "123") + kGend + kGend +
     form(""),
   "FORM:TEST[FORM:TEST[AAAA=123 ]]FORM:TEST[]."},
  {"streamed, ended by the file", header("FORM", kStreamed) + "TEST" + chunk("AAAA", "123"), "FORM:TEST[AAAA=123 ]."},
  {"unknown size takes the end from GEND", header("FOR4", kPatched) + "TEST" + kGend + form(""),
   "FOR4:TEST[]FORM:TEST[]."},
  {"end mark behind a group", header("FOR4", kStreamed) + "TEST" + kGend + kEovc + form(""), "FOR4:TEST[]FORM:TEST[]."},
  {"known size and GEND agree", form(kGend) + form(""), "FORM:TEST[]FORM:TEST[]."},
  {"known size and GEND differ", form(kGend + chunk("AAAA", "")), "FORM:TEST[!19]."},
  {"GEND with a size", header("FORM", kStreamed) + "TEST" + header("GEND", 4) + "1234", "FORM:TEST[!18]!18!12"},
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
      EXPECT_EQ(read(names[way]), expected[way]) << one.what << " from " << names[way];
  }
}

TEST(FLread, getsDataInPiecesAndNoFurther)
{
  const std::string bytes =
    form(chunk("AAAA", "1234567") + chunk("BBBB", std::string(100000, 'b')) + chunk("CCCC", "c"));
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    SCOPED_TRACE(name);
    _FLfile* file = FLopen(name.c_str(), "r");
    ASSERT_TRUE(file);
    char buffer[16] = {};
    flerrno = 0;
    EXPECT_EQ(FLget(file, buffer, 1), 0);
    EXPECT_EQ(flerrno, kFLnoChunk);
    EXPECT_EQ(FLgetchunk(file, nullptr, nullptr), nullptr);
    EXPECT_EQ(flerrno, kFLnoGroup);
    ASSERT_EQ(FLbgnreadgroup(file, nullptr, nullptr), 0);
    EXPECT_EQ(FLbgnreadgroup(file, nullptr, nullptr), kFLchunkHeader);
    flerrno = 0;
    EXPECT_EQ(FLget(file, buffer, 3), 3);
    EXPECT_EQ(flerrno, 0);
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
    const char* data = static_cast<const char*>(FLgetchunk(file, &name2, &size));
    ASSERT_TRUE(data);
    EXPECT_EQ(name2, id("BBBB"));
    EXPECT_EQ(std::string_view(data, std::size_t(size)), std::string(100000, 'b'));
    ASSERT_EQ(FLbgnget(file, nullptr, nullptr), 0);
    data = static_cast<const char*>(FLbgnread(file, 1));
    ASSERT_TRUE(data);
    EXPECT_EQ(*data, 'c');
    EXPECT_EQ(FLendget(file), 0);
    EXPECT_EQ(FLgetchunk(file, nullptr, nullptr), nullptr);
    EXPECT_EQ(flerrno, kFLend);
    EXPECT_EQ(FLendrgroup(file), 0);
    EXPECT_EQ(FLendrgroup(file), kFLnoGroup);
    EXPECT_EQ(FLclose(file), 0);
  }
}

// What is claimed is not allocated before it comes.
TEST(FLread, believesNoSize)
{
  const std::string bytes = header("FORM", 0x7FFFFFE0) + "TEST" + header("AAAA", 0x7FFFFF00) + "1234";
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

TEST(FLread, countsFromTheEnd)
{
  const std::string bytes = form(chunk("AAAA", std::string(1000, 'a')));
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    _FLfile* file = FLopen(name.c_str(), "r");
    const bool pipe = name.compare(0, 5, "pipe:") == 0;
    EXPECT_EQ(FLseek(file, 4, 2), pipe ? kFLunknownSize : 0) << name;
    EXPECT_EQ(FLtell(file), pipe ? 0 : Tint64(bytes.size()) - 4) << name;
    EXPECT_NE(FLseek(file, -1, 0), 0) << name;
    EXPECT_NE(FLseek(file, 0x7FFFFFFFFFFFFFFF, 1), 0) << name;
    FLclose(file);
  }
}

TEST(FLread, findsTheSizesOfOldChunks)
{
  const std::string bytes =
    form(header("FRAM", 1) + "123456" + header("SHAP", 0x7FFFFFFF) + "12" + header("GRUP", 2) + "ab");
  const Scratch scratch;
  for (const std::string& name : ways(scratch, bytes))
  {
    EXPECT_EQ(read(name, "rl"), "FORM:TEST[FRAM=123456 SHAP=12 GRUP=ab ].") << name;
    EXPECT_EQ(read(name).substr(0, 17), "FORM:TEST[FRAM=1 ") << name;
  }
}
