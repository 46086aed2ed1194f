#include "Foundation/File/Tdirectory.h"
#include "Foundation/File/TfileStream.h"
#include "tests/Environment.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <cerrno>

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
    EXPECT_TRUE(made.isDirectory() && made.exists() && !made.isFile() && made.size() == -1);
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
  EXPECT_TRUE(Tdirectory::current().isDirectory() && Tfilesystem(TappDirectory().path() / "none").rename(file));
}

TEST(Tdirectory, KnowsWhereAUsersFilesAre)
{
  TappDirectory app;
  EXPECT_TRUE(app.isDirectory());
  const struct
  {
    const char* variable;
    const char* directory;
  } variables[] = {
#ifdef _WIN32
    {"TMP", "T:/x"},
    {"APPDATA", "A:/x"},
    {"USERPROFILE", ""},
#else
    {"TMPDIR", "/x"},
    {"XDG_CONFIG_HOME", "relative"},
    {"XDG_DATA_HOME", "/data"},
    {"HOME", "/u"},
#endif
  };
  std::string before[std::size(variables)];
  for (std::size_t i = 0; i != std::size(variables); ++i)
  {
    const char* const value = std::getenv(variables[i].variable);
    before[i] = value ? value : "";
    setVariable(variables[i].variable, variables[i].directory);
  }
#ifdef _WIN32
  const char* const expected[] = {"T:/x", "A:/x/vexa", "A:/x/vexa/bitmaps", "A:/x/vexa/scripts", "A:/x/vexa/shelves"};
#else
  const char* const expected[] = {"/x", "/u/.config/vexa", "/data/vexa/bitmaps", "/data/vexa/scripts",
                                  "/data/vexa/shelves"};
#endif
  TtemporaryDirectory temporary;
  TpreferencesDirectory preferences;
  TuserBitmapsDirectory bitmaps;
  TuserScriptDirectory scripts;
  TuserShelfDirectory shelves;
  Tdirectory* const all[] = {&temporary, &preferences, &bitmaps, &scripts, &shelves};
  for (int i = 0; i != 5; ++i)
  {
    EXPECT_EQ(all[i]->path(), TfilePath(expected[i]));
    EXPECT_TRUE(all[i]->cast(Tfilesystem::fTypeid) == all[i] && !all[i]->cast(app.typeof()));
  }
  for (std::size_t i = 0; i != std::size(variables); ++i)
    setVariable(variables[i].variable, before[i]);
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
  EXPECT_FALSE(stream.open(TfilePath(scratch.path("").c_str()), std::ios::in) || stream.is_open());
  EXPECT_EQ(stream.cast(Tfilesystem::fTypeid), static_cast<Tfilesystem*>(&stream));
#ifdef __linux__
  stream.open("/dev/full", std::ios::out);
  stream << "x";
  EXPECT_FALSE(stream.close());
#endif
}

} // namespace
