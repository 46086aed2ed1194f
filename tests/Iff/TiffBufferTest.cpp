#include "tests/FailingMemory.h"
#include "tests/Iff/Outputs.h"
#include "tests/Iff/Recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

namespace {

// Writes a random tree, each part of it in a random way that there is, and gives the bytes that it should have in a
// file.
struct Writer
{
  TiffFile& fFile;
  bool fBuffers, fStreams;
  std::mt19937 fTree, fWay;
  bool fGood = true;

  std::string group(std::size_t outer, int depth)
  {
    constexpr const char* kNames[] = {"FOR4", "LIS4", "CAT4", "FOR8", "CAT8", "FORM"};
    const std::size_t kind = fTree() % (outer == 2 ? 5 : 6); // 2-byte alignment is not for unknown sizes
    const std::size_t align = kind == 3 || kind == 4 ? 8 : std::max<std::size_t>(outer, 4);
    const bool isFlat = depth == 0 || fTree() % 2;
    std::vector<std::size_t> sizes(fTree() % 6);
    for (std::size_t& size : sizes)
      size = fTree() % (fTree() % 4 ? 12 : fTree() % 4 ? 3000 : 40000);
    // A reader does not find the end of what overflowed into a pipe.
    const bool fits = std::accumulate(sizes.begin(), sizes.end(), std::size_t(0)) <= 65536;
    TiffFile::setBufferingMode(fBuffers && isFlat && align == 4 && (fits || !fStreams));
    std::string all;
    fGood &= fFile.beginWriteGroup(kNames[kind], "TEST") == 0;
    for (const std::size_t size : sizes)
      all += isFlat || fTree() % 2 ? leaf(size, align) : group(align, depth - 1);
    fGood &= fFile.endWriteGroup() == 0 && !TiffFile::bufferingMode();
    return form(all, kNames[kind], align);
  }

  std::string leaf(std::size_t size, std::size_t align)
  {
    const std::string name = "LF" + std::to_string(10 + fTree() % 90), data(size, char('a' + fTree() % 26));
    const long length = long(size);
    if (fWay() % 3 == 0)
      fGood &= fFile.putChunk(TiffTag(name), Tint32(length), data.data()) == 0;
    else
    {
      const bool isAlone = fBuffers && !TiffFile::bufferingMode() && fWay() % 2;
      if (isAlone)
        TiffFile::setBufferingMode(true);
      fGood &= fFile.beginPut(TiffTag(name), fStreams || fWay() % 2 ? Tint32(length) : -1) == 0;
      for (long at = 0, piece; at < length; at += piece)
      {
        piece = std::min(long(fWay() % 20000), length - at);
        fGood &= fFile.put(&data[std::size_t(at)], piece) == piece;
      }
      fGood &= fFile.endPut() == 0;
      if (isAlone)
        TiffFile::setBufferingMode(false);
    }
    return chunk(name, data, align);
  }
};

TEST(TiffBuffer, writesWhatItWouldWriteUnbuffered)
{
  int exact = 0;
  for (unsigned seed = 0; seed < 28; ++seed)
  {
    const bool buffers = seed % 4 != 0;
    std::string expected;
    const Outputs out([&](const char* name, const char* mode) {
      TiffFile file(name, mode);
      Writer writer{file, buffers, std::string(name).find("pipe:") == 0, std::mt19937(seed), std::mt19937(seed)};
      expected = writer.group(2, 3);
      EXPECT_TRUE(writer.fGood) << seed << " " << FLstrerror(flerrno);
      EXPECT_EQ(file.close(), 0) << seed;
    });
    ASSERT_TRUE(out.file == expected && out.memory == expected && out.spooled == expected) << seed;
    const std::string found = eventsOf(expected);
    std::string walked = readAll(FLopen(memoryName(expected.data(), expected.size()).c_str(), "r"));
    walked.back() = ']';
    ASSERT_EQ(found, walked) << seed;
    ASSERT_EQ(eventsOf(out.pipe), found) << seed;
    exact += buffers && out.pipe == expected;
  }
  EXPECT_GT(exact, 3); // pipes that got every size
}

const std::string kData(80000, 'a');

// Chunks of these sizes in a group, which is left open.
bool writeGroup(TiffFile& file, const std::vector<long>& sizes, TiffTag group = "FOR4")
{
  bool good = file.beginWriteGroup(group, "TEST") == 0;
  for (const long size : sizes)
  {
    good = file.beginPut("AAAA") == 0 && good;
    good = file.put(kData.data(), size) == size && good;
    good = file.endPut() == 0 && good;
  }
  return good;
}

// The group that is then there, if its sizes are known.
std::string groupOf(const std::vector<long>& sizes)
{
  std::string all;
  for (const long size : sizes)
    all += chunk("AAAA", kData.substr(0, std::size_t(size)), 4);
  return form(all, "FOR4", 4);
}

TEST(TiffBuffer, goesOnUnbufferedPast65536Bytes)
{
  const std::pair<std::vector<long>, std::size_t> cases[] = {// and how many chunks are in front of what is too much
                                                             {{65536}, 9},
                                                             {{65537}, 0},
                                                             {{65535, 0, 1}, 9},
                                                             {{3, 65533, 1}, 2},
                                                             {{1, 70000, 2, 3}, 1}};
  for (const auto& [sizes, kept] : cases)
  {
    const Outputs out([&sizes = sizes](const char* name, const char* mode) {
      TiffFile file(name, mode);
      file.setBufferingMode(true);
      EXPECT_TRUE(writeGroup(file, sizes) && file.endWriteGroup() == 0 && !file.bufferingMode());
    });
    const std::string exact = groupOf(sizes);
    EXPECT_TRUE(out.file == exact && out.memory == exact && out.spooled == exact) << sizes[0];
    std::string streamed = begun(kStreamed, "FOR4");
    for (std::size_t i = 0; i < sizes.size(); ++i)
    {
      const std::string data = kData.substr(0, std::size_t(sizes[i]));
      streamed += i < kept ? chunk("AAAA", data, 4) : header("AAAA", kStreamed) + padded(data, 4) + kEovc;
    }
    EXPECT_TRUE(out.pipe == (kept == 9 ? exact : streamed + kGend)) << sizes[0];
  }
}

// Two files in blocks, and the mode on.
class TiffBufferState : public testing::Test
{
protected:
  std::string fBlock = std::string(80000, '#'), fOtherBlock = fBlock;
  TiffFile fFile{memoryName(fBlock.data(), fBlock.size()).c_str(), "w"};
  TiffFile fOther{memoryName(fOtherBlock.data(), fOtherBlock.size()).c_str(), "w"};

  void SetUp() override { TiffFile::setBufferingMode(true); }
  void TearDown() override { TiffFile::setBufferingMode(false); }
};

TEST_F(TiffBufferState, groupsAreWrittenAtOnceAndAlone)
{
  EXPECT_EQ(fFile.beginWriteGroup("PROP", "TEST"), kFLbadRoot);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", 0x80000000), kFLbadId);
  EXPECT_TRUE(writeGroup(fFile, {3, 8}));
  EXPECT_EQ(fFile.tell(), 0);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", "TEST"), kFLnestedWrite);
  EXPECT_TRUE(!fFile.beginWriteBufferedChunk("AAAA", 4) && fFile.error() == kFLnestedWrite);
  EXPECT_EQ(fFile.beginPut("GEND"), kFLreservedId);
  EXPECT_EQ(fFile.beginPut("PROP"), kFLunexpectedBlock);
  EXPECT_EQ(fFile.put("", -1), 0);
  TiffFile::freeBuffers();
  // Another file is written meanwhile, but not with a group of the same kind.
  EXPECT_EQ(fOther.beginWriteGroup("FOR4", "TEST"), kFLnestedWrite);
  TiffFile::setBufferingMode(false);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", "TEST"), kFLnestedWrite);
  EXPECT_TRUE(writeGroup(fOther, {2}, "FORM"));
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fOther.putChunk("BBBB", 2, "bb") + fOther.endWriteGroup(), 0);
  EXPECT_EQ(fFile.endWriteGroup(), 0);
  EXPECT_FALSE(TiffFile::bufferingMode());
  EXPECT_EQ(fBlock.substr(0, 41), groupOf({3, 8}) + "#");
  // The mode is used up; what has begun goes with the file, is written when it is closed, and dropped by quickClose.
  EXPECT_TRUE(writeGroup(fFile, {}, "FORM") && fFile.tell() == 52 && fFile.endWriteGroup() == 0);
  TiffFile::setBufferingMode(true);
  EXPECT_TRUE(writeGroup(fFile, {3}) && fFile.put("b", 1) == 1); // as long as no other chunk begins
  TiffFile moved(std::move(fFile));
  EXPECT_EQ(moved.close(), 0);
  EXPECT_EQ(fBlock.substr(40, 37), form("") + form(chunk("AAAA", "aaab"), "FOR4") + "#");
  TiffFile::setBufferingMode(true);
  const Tint64 before = fOther.tell();
  EXPECT_TRUE(writeGroup(fOther, {3}) && fOther.quickClose() == 0 && fOtherBlock[std::size_t(before)] == '#');
  EXPECT_FALSE(TiffFile::bufferingMode());
}

// Sizes are counted as in groups that are aligned to 4.
TEST_F(TiffBufferState, otherAlignmentsAreWrittenWhereTheyAgree)
{
  const std::tuple<const char*, const char*, std::vector<long>, int> cases[] = {
    {"FORM", "FORM", {3, 8}, 0}, {"FORM", "FORM", {3, 5}, kFLbadSize}, {"FOR8", "FOR4", {3}, kFLbadSize}};
  for (const auto& [around, group, sizes, status] : cases)
  {
    TiffFile::setBufferingMode(false);
    EXPECT_EQ(fFile.beginWriteGroup(around, "TEST"), 0);
    TiffFile::setBufferingMode(true);
    EXPECT_TRUE(writeGroup(fFile, sizes, group));
    EXPECT_EQ(fFile.endWriteGroup(), status) << around << group;
    EXPECT_FALSE(TiffFile::bufferingMode());
    EXPECT_EQ(fFile.endWriteGroup(), 0);
  }
  EXPECT_EQ(eventsOf(fBlock.substr(0, 76)), "FORM:TEST[FORM:TEST[AAAA=aaa AAAA=aaaaaaaa ]]FORM:TEST[]FOR8:TEST[]]");
  TiffFile::setBufferingMode(true);
  EXPECT_TRUE(writeGroup(fFile, {5}, "FORM"));
  EXPECT_TRUE(fFile.close() == -1 && fFile.error() == kFLbadSize);
}

TEST_F(TiffBufferState, chunksAreWrittenOneByOne)
{
  EXPECT_EQ(fFile.beginPut("AAAA"), kFLbadRoot);
  TiffFile::setBufferingMode(false);
  fFile.beginWriteGroup("LIS4", "TEST");
  TiffFile::setBufferingMode(true);
  EXPECT_TRUE(fFile.put("a", 1) == 0 && fFile.error() == kFLnoChunk);
  EXPECT_TRUE(fFile.beginPut("AAAA", 99) == 0 && fFile.put("a", 1) == 1);
  EXPECT_EQ(fFile.beginWriteGroup("FOR4", "TEST"), kFLnestedWrite);
  EXPECT_EQ(fFile.endWriteGroup(), kFLnestedWrite);
  EXPECT_TRUE(fFile.beginPut("BBBB") == 0 && fFile.put("b", 1) == 1); // is written first
  TiffFile::setBufferingMode(false);                                  // counts for what begins next
  EXPECT_TRUE(fFile.endPut() == 0 && fFile.put("a", 1) == 1 && fFile.endPut() == 0);
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fFile.beginPut("DDDD"), 0);
  EXPECT_EQ(fFile.put(std::string(65536, 'd').data(), 65536), 65536);
  EXPECT_TRUE(fFile.put("d", 1) == 1 && !TiffFile::bufferingMode() && fFile.endPut() == 0);
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fFile.beginPut("FFFF"), 0);
  EXPECT_EQ(fFile.close(), 0); // with what is buffered
  const std::string all =
    form(chunk("BBBB", "b", 4) + chunk("AAAA", "aa", 4) + chunk("DDDD", std::string(65537, 'd'), 4) + chunk("FFFF", ""),
         "LIS4");
  EXPECT_TRUE(fBlock.substr(0, all.size() + 1) == all + "#");
}

// A group that does not fit, whatever part of it, is reported by some call and by closing, and nothing is left open.
TEST(TiffBuffer, reportsEveryFailedWrite)
{
  for (const std::vector<long>& sizes : {std::vector<long>{3, 0, 8}, {5, 70000, 4}})
  {
    const std::size_t needed = groupOf(sizes).size();
    for (std::size_t room = 0; room <= needed; room += room > 60 && room + 60 < needed ? 3001 : 1)
    {
      std::vector<char> block(room + 1, '#');
      TiffFile file(memoryName(block.data(), room).c_str(), "w");
      TiffFile::setBufferingMode(true);
      bool good = writeGroup(file, sizes);
      good = file.endWriteGroup() == 0 && good;
      EXPECT_EQ(good, room >= needed) << room;
      EXPECT_FALSE(TiffFile::bufferingMode());
      EXPECT_EQ(file.endWriteGroup(), kFLnoGroup) << room;
      EXPECT_EQ(file.close(), good ? 0 : -1) << room;
      EXPECT_EQ(block[room], '#');
    }
  }
}

#if FAILING_MEMORY
TEST(TiffBuffer, reportsEveryFailedAllocation)
{
  const std::vector<long> sizes{30000, 1, 0, 2000};
  std::string expected = groupOf(sizes), block(32100, '#');
  const std::string name = memoryName(block.data(), block.size());
  const int runs = forEachFailingAllocation([&] {
    TiffFile::freeBuffers();
    block.assign(block.size(), '#');
    TiffFile file(name.c_str(), "w");
    if (!file.isActive())
      return;
    TiffFile::setBufferingMode(true);
    const bool good = writeGroup(file, sizes), ended = file.endWriteGroup() == 0;
    EXPECT_TRUE(!TiffFile::bufferingMode() && file.close() == 0);
    // All of it is there, or nothing; what could not be put was said at the end again.
    EXPECT_TRUE(good || !ended);
    EXPECT_EQ(block.compare(0, expected.size(), expected) == 0, ended);
    EXPECT_EQ(block[0] == '#', !ended);
  });
  EXPECT_GT(runs, 8);
}
#endif

} // namespace
