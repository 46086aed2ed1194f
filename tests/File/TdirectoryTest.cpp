#include "Foundation/File/Tdirectory.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/File/TfileStream.h"
#include "tests/Environment.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

namespace {

std::string joined(const TstringArray& names)
{
  std::string all;
  for (const Tstring& name : names)
    all += std::string(name) + ' ';
  return all;
}

TEST(Tdirectory, MakesListsAndRemoves)
{
  const Scratch scratch;
  const TfilePath root(scratch.path("").c_str()), file(scratch.write("b", "12345").c_str());
  for (const char* below : {"new//deep/er/", "new/deep/er", "a"})
  {
    const Tdirectory made(root / below);
    EXPECT_EQ(made.create(), 0) << below;
    EXPECT_TRUE(made.isDirectory() && made.size() == -1);
  }
  TstringArray names;
  EXPECT_EQ(Tdirectory(root).list(names), 0);
  EXPECT_EQ(joined(names), "a b new ");
#if FAILING_MEMORY
  EXPECT_GT(forEachFailingAllocation([&] {
              const long status = Tdirectory(root).list(names);
              EXPECT_EQ(joined(names), status == 0 ? "a b new " : "") << status;
            }),
            3);
#endif
  EXPECT_TRUE(Tdirectory(root / "new").remove() != 0 && Tdirectory(root / "new/deep/er").remove() == 0);
  EXPECT_NE(Tdirectory(file / "below").create(), 0); // a file is in the way
  EXPECT_EQ(Tdirectory(file).create(), EEXIST);
  EXPECT_EQ(Tdirectory(TfilePath()).create(), ENOENT);
  EXPECT_EQ(Tdirectory(root / "none").list(names), ENOENT);
  EXPECT_EQ(names.length(), 0u);

  Tfilesystem entry(file);
  EXPECT_TRUE(entry.isFile() && entry.size() == 5 && !entry.isDirectory());
  EXPECT_LT(Ttime::now() - entry.modificationTime(), Tduration(60));
  EXPECT_NE(entry.rename(root / "none/b"), 0);
  EXPECT_EQ(entry.path(), file);
  EXPECT_EQ(entry.rename(root / "c"), 0);
  EXPECT_TRUE(!Tfilesystem(file).exists() && entry.remove() == 0 && entry.remove() == ENOENT && !entry.exists());
  EXPECT_FALSE(Tfilesystem(Tstring(std::string_view("/\0x", 3))).exists());
}

TEST(Tdirectory, KnowsWhereAUsersFilesAre)
{
#ifdef _WIN32
  std::pair<const char*, std::string> variables[] = {{"TMP", "T:/x"}, {"APPDATA", ""}, {"USERPROFILE", "U:"}};
  const char *const settings = "U:/AppData/Roaming/vexa", *const data = settings, *const temporary = "T:/x";
#else
  std::pair<const char*, std::string> variables[] = {
    {"TMPDIR", "/x"}, {"XDG_CONFIG_HOME", "relative"}, {"XDG_DATA_HOME", "/d"}, {"HOME", "/u"}};
  const char *const settings = "/u/.config/vexa", *const data = "/d/vexa", *const temporary = "/x";
#endif
  const auto exchange = [&] {
    for (auto& [name, value] : variables)
    {
      const char* const now = std::getenv(name);
      const std::string before = now ? now : "";
      setVariable(name, value);
      value = before;
    }
  };
  exchange();
  EXPECT_EQ(TtemporaryDirectory().path(), temporary);
  EXPECT_EQ(TpreferencesDirectory().path(), settings);
  EXPECT_EQ(TuserBitmapsDirectory().path(), TfilePath(data) / "bitmaps");
  EXPECT_EQ(TuserScriptDirectory().path(), TfilePath(data) / "scripts");
  EXPECT_EQ(TuserShelfDirectory().path(), TfilePath(data) / "shelves");
  exchange();
  TuserShelfDirectory shelf;
  EXPECT_TRUE(shelf.cast(Tfilesystem::fTypeid) == &shelf && !shelf.cast(TappDirectory::fTypeid));
  EXPECT_TRUE(TappDirectory().isDirectory() && Tdirectory::current().isDirectory());
}

TEST(TfileStream, StreamsUnderItsPath)
{
  const Scratch scratch;
  TfileStream stream(TfilePath(scratch.path("numbers").c_str()), std::ios::out);
  stream << 1 << '\n' << 2.5;
  EXPECT_TRUE(stream.open(stream.path()) && stream.size() == 5); // closed, so written
  double a = 0, b = 0, c = 0;
  EXPECT_FALSE(stream >> a >> b >> c);
  EXPECT_TRUE(a + b == 3.5 && stream.close());
  EXPECT_FALSE(stream.open(TfilePath(scratch.path("").c_str()), std::ios::in) || stream.close());
  EXPECT_TRUE(stream.cast(Tfilesystem::fTypeid) == static_cast<Tfilesystem*>(&stream));
#ifdef __linux__
  stream.open("/dev/full", std::ios::out);
  stream << "x";
  EXPECT_FALSE(stream.close());
#endif
}

} // namespace
