#include "tests/FailingMemory.h"
#include "tests/Iff/Outputs.h"
#include "tests/Iff/Recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

// A tree of chunks.
struct Node
{
  std::string name, data;
  std::vector<Node> members = {};
  std::size_t align = 0; // of a group's members; 0 for a chunk

  std::string bytes(std::size_t outer = 2) const
  {
    if (align == 0)
      return chunk(name, data, outer);
    return form(std::accumulate(members.begin(), members.end(), std::string(),
                                [this](const std::string& all, const Node& each) { return all + each.bytes(align); }),
                name, align);
  }
  std::string events() const
  {
    if (align == 0)
      return name + "=" + data + " ";
    return (name[0] == 'F' ? "" : "<") + name + ":TEST[" +
           std::accumulate(members.begin(), members.end(), std::string(),
                           [](const std::string& all, const Node& each) { return all + each.events(); }) +
           "]";
  }
};

class Trees
{
public:
  explicit Trees(unsigned seed)
    : fRandom(seed)
  {
  }

  Node group(std::size_t align, int depth)
  {
    constexpr const char* kNames[] = {"FOR4", "LIS4", "CAT4", "FOR8", "CAT8", "FORM"};
    const std::size_t kind = fRandom() % (align == 2 ? 5 : 6); // 2-byte alignment is for exact sizes
    Node node{kNames[kind], "", {}, std::max<std::size_t>(align, kind / 3 == 1 && kind < 5 ? 8 : 4)};
    const bool flat = depth == 0 || fRandom() % 2;
    for (unsigned i = unsigned(fRandom() % 6); i > 0; --i)
      node.members.push_back(flat || fRandom() % 2 ? leaf() : group(node.align, depth - 1));
    return node;
  }

private:
  std::mt19937 fRandom;

  Node leaf()
  {
    const std::size_t size = fRandom() % (fRandom() % 4 ? 12 : fRandom() % 4 ? 3000 : 40000);
    return {text(id("AAAA") + TuInt32(fRandom() % 26)), std::string(size, char('a' + fRandom() % 26))};
  }
};

// Writes the tree, in one of the ways that each part of it may be written, and returns whether all went well.
class Writer
{
public:
  Writer(unsigned seed, bool buffers, bool streams)
    : fRandom(seed)
    , fBuffers(buffers)
    , fStreams(streams)
  {
  }

  bool write(TiffFile& file, const Node& node)
  {
    if (node.align == 0)
      return leaf(file, node);
    std::size_t total = 0;
    for (const Node& each : node.members)
      total += each.align == 0 ? each.data.size() : 1000000;
    // A reader does not find the end of what overflowed into a pipe.
    const bool buffered = fBuffers && node.align == 4 && total < (fStreams ? 65537 : 1000000);
    TiffFile::setBufferingMode(buffered);
    bool good = file.beginWriteGroup(TiffTag(node.name), "TEST") == 0;
    for (const Node& each : node.members)
      good = write(file, each) && good;
    good = file.endWriteGroup() == 0 && good;
    return good && !TiffFile::bufferingMode();
  }

private:
  std::mt19937 fRandom;
  bool fBuffers, fStreams;

  bool leaf(TiffFile& file, const Node& node)
  {
    const TiffTag tag(node.name);
    const long size = long(node.data.size());
    if (fRandom() % 3 == 0)
      return file.putChunk(tag, Tint32(size), node.data.data()) == 0;
    const bool alone = fBuffers && !TiffFile::bufferingMode() && size < 65537 && fRandom() % 2;
    if (alone)
      TiffFile::setBufferingMode(true);
    bool good = file.beginPut(tag, alone || (!fStreams && fRandom() % 2) ? -1 : Tint32(size)) == 0;
    for (long at = 0, piece; at < size; at += piece)
    {
      piece = std::min<long>(long(fRandom() % 20000), size - at);
      good = file.put(node.data.data() + at, piece) == piece && good;
    }
    good = file.endPut() == 0 && good;
    if (alone)
      TiffFile::setBufferingMode(false);
    return good;
  }
};

TEST(TiffBuffer, writesWhatItWouldWriteUnbuffered)
{
  int buffered = 0;
  for (unsigned seed = 0; seed < 24; ++seed)
  {
    Trees trees(seed);
    const Node tree = trees.group(2, 3);
    for (const bool buffers : {false, true})
    {
      const Outputs out([&](const char* name, const char* mode) {
        const bool streams = std::string(name).find("pipe:") == 0;
        TiffFile file(name, mode);
        Writer writer(seed + 1000, buffers, streams);
        EXPECT_TRUE(writer.write(file, tree)) << seed << " " << FLstrerror(flerrno);
        EXPECT_EQ(file.close(), 0) << seed;
      });
      ASSERT_TRUE(out.file == tree.bytes() && out.memory == out.file && out.spooled == out.file) << seed;
      ASSERT_EQ(eventsOf(out.file), tree.events() + "]") << seed;
      ASSERT_EQ(eventsOf(out.pipe), tree.events() + "]") << seed;
      buffered += buffers && out.pipe == out.file; // all sizes were exact
    }
  }
  EXPECT_GT(buffered, 3);
  TiffFile::freeBuffers();
}

// Puts chunks of these sizes into a group.
void writeGroup(TiffFile& file, const std::vector<long>& sizes, TiffTag group = "FOR4")
{
  EXPECT_EQ(file.beginWriteGroup(group, "TEST"), 0);
  for (const long size : sizes)
  {
    EXPECT_EQ(file.beginPut("AAAA"), 0);
    EXPECT_EQ(file.put(std::string(std::size_t(size), 'a').data(), size), size);
    EXPECT_EQ(file.endPut(), 0);
  }
}

TEST(TiffBuffer, goesOnUnbufferedPast65536Bytes)
{
  const struct
  {
    std::vector<long> sizes;
    std::size_t kept; // chunks in front of the one that is one too many
  } cases[] = {{{65536}, 9},       {{65537}, 0},       {{65535, 0, 1}, 9},    {{65535, 0, 2}, 2},
               {{3, 65533, 0}, 9}, {{3, 65533, 1}, 2}, {{1, 70000, 2, 3}, 1}, {{30000, 30000, 30000}, 2}};
  for (const auto& [sizes, kept] : cases)
  {
    const Outputs out([&sizes = sizes](const char* name, const char* mode) {
      TiffFile file(name, mode);
      file.setBufferingMode(true);
      writeGroup(file, sizes);
      EXPECT_EQ(file.endWriteGroup(), 0);
      EXPECT_FALSE(file.bufferingMode());
      EXPECT_EQ(file.close(), 0);
    });
    // Known to the file and to the block when it is patched; the pipe is told at the end.
    std::string exact, streamed;
    for (std::size_t i = 0; i < sizes.size(); ++i)
    {
      const std::string data(std::size_t(sizes[i]), 'a');
      exact += chunk("AAAA", data, 4);
      streamed += i < kept ? chunk("AAAA", data, 4) : header("AAAA", kStreamed) + padded(data, 4) + kEovc;
    }
    exact = form(exact, "FOR4", 4);
    EXPECT_TRUE(out.file == exact && out.memory == exact && out.spooled == exact) << sizes[0];
    EXPECT_TRUE(out.pipe == (kept == 9 ? exact : begun(kStreamed, "FOR4") + streamed + kGend)) << sizes[0];
  }
}

// Each test in a block that holds a good deal, with its own other file.
class TiffBufferState : public testing::Test
{
protected:
  std::string fBlock = std::string(200000, '#'), fOtherBlock = fBlock;
  TiffFile fFile{memoryName(fBlock.data(), fBlock.size()).c_str(), "w"};
  TiffFile fOther{memoryName(fOtherBlock.data(), fOtherBlock.size()).c_str(), "w"};

  void SetUp() override { TiffFile::setBufferingMode(true); }
  void TearDown() override { TiffFile::setBufferingMode(false); }

  std::string written(TiffFile& file, int status = 0)
  {
    const std::string& block = &file == &fFile ? fBlock : fOtherBlock;
    const std::size_t length = std::size_t(file.tell());
    EXPECT_EQ(file.close(), status);
    EXPECT_EQ(block.find_first_not_of('#', length), std::string::npos);
    return block.substr(0, length);
  }
};

TEST_F(TiffBufferState, groupsAreWrittenOnceAndExactly)
{
  writeGroup(fFile, {3, 8});
  EXPECT_EQ(fFile.tell(), 0);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", "TEST"), kFLnestedWrite);
  EXPECT_EQ(fFile.beginWriteBufferedChunk("AAAA", 4), nullptr);
  EXPECT_EQ(fFile.beginPut("FOR2"), kFLreservedId);
  EXPECT_EQ(fFile.beginPut("GEND"), kFLreservedId);
  EXPECT_EQ(fFile.beginPut("PROP"), kFLunexpectedBlock);
  EXPECT_EQ(fFile.put("", -1), 0);
  TiffFile::freeBuffers();
  // Another file is written meanwhile, but not with a group of the same kind.
  EXPECT_EQ(fOther.beginWriteGroup("FOR4", "TEST"), kFLnestedWrite);
  TiffFile::setBufferingMode(false);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", "TEST"), kFLnestedWrite);
  writeGroup(fOther, {1}, "FORM");
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fOther.putChunk("BBBB", 2, "bb"), 0);
  EXPECT_EQ(fOther.endWriteGroup(), 0);
  EXPECT_EQ(fFile.endWriteGroup(), 0);
  EXPECT_FALSE(TiffFile::bufferingMode());
  EXPECT_EQ(written(fFile), header("FOR4", 32) + "TEST" + chunk("AAAA", "aaa", 4) + chunk("AAAA", "aaaaaaaa"));
  EXPECT_EQ(written(fOther), form(header("AAAA", 1) + padded("a", 4) + chunk("BBBB", "bb"), "FORM", 4));
}

TEST_F(TiffBufferState, refusesGroupsAtOnce)
{
  EXPECT_EQ(fFile.beginWriteGroup("PROP", "TEST"), kFLbadRoot);
  EXPECT_EQ(fFile.beginWriteGroup("FORM", 0x80000000), kFLbadId);
  EXPECT_EQ(TiffFile().beginWriteGroup("FORM", "TEST"), kFLbadCall);
  EXPECT_EQ(fFile.put("", 1), 0);
  EXPECT_EQ(fFile.error(), kFLnoChunk);
  writeGroup(fFile, {});
  EXPECT_EQ(fFile.put("", 1), 0);
  EXPECT_EQ(fFile.error(), kFLnoChunk);
  EXPECT_EQ(fFile.endWriteGroup(), 0);
  EXPECT_EQ(written(fFile), form("", "FOR4"));
}

// Sizes are counted as in groups that are aligned to 4.
TEST_F(TiffBufferState, writesOtherAlignmentsOnlyWhereTheyAgree)
{
  const struct
  {
    const char *around, *group;
    std::vector<long> sizes;
    int status;
  } cases[] = {{"FORM", "FORM", {3, 8}, 0},
               {"FORM", "FORM", {3, 5}, kFLbadSize},
               {"FOR8", "FOR4", {8}, 0},
               {"FOR4", "FOR8", {3}, kFLbadSize},
               {"FOR8", "FOR4", {12}, kFLbadSize}};
  for (const auto& each : cases)
  {
    TiffFile::setBufferingMode(false);
    ASSERT_EQ(fFile.beginWriteGroup(TiffTag(each.around), "TEST"), 0);
    const Tint64 before = fFile.tell();
    TiffFile::setBufferingMode(true);
    writeGroup(fFile, each.sizes, each.group);
    EXPECT_EQ(fFile.endWriteGroup(), each.status) << each.around << each.group;
    EXPECT_EQ(fFile.tell() == before, each.status != 0);
    EXPECT_FALSE(TiffFile::bufferingMode());
    EXPECT_EQ(fFile.endWriteGroup(), 0);
  }
  const Tint64 length = fFile.tell();
  fFile.close();
  EXPECT_EQ(eventsOf(fBlock.substr(0, std::size_t(length))),
            "FORM:TEST[FORM:TEST[AAAA=aaa AAAA=aaaaaaaa ]]FORM:TEST[]FOR8:TEST[FOR4:TEST[AAAA=aaaaaaaa ]]FOR4:TEST[]"
            "FOR8:TEST[]]");
}

TEST_F(TiffBufferState, chunksAreWrittenOneByOne)
{
  EXPECT_EQ(fFile.beginPut("AAAA"), kFLbadRoot);
  TiffFile::setBufferingMode(false);
  fFile.beginWriteGroup("LIS4", "TEST");
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fFile.beginPut("AAAA", 99), 0);
  EXPECT_EQ(fFile.put("a", 1), 1);
  EXPECT_EQ(fFile.beginWriteGroup("FOR4", "TEST"), kFLnestedWrite);
  EXPECT_EQ(fFile.endWriteGroup(), kFLnestedWrite);
  EXPECT_EQ(fFile.beginPut("BBBB"), 0); // is written first
  EXPECT_EQ(fFile.put("b", 1), 1);
  TiffFile::setBufferingMode(false); // counts for what begins next
  EXPECT_EQ(fFile.endPut(), 0);
  EXPECT_EQ(fFile.put("a", 1), 1);
  EXPECT_EQ(fFile.endPut(), 0);
  EXPECT_EQ(fFile.putChunk("CCCC", 1, "c"), 0);
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fFile.beginPut("DDDD"), 0);
  EXPECT_EQ(fFile.put(std::string(65536, 'd').data(), 65536), 65536);
  EXPECT_EQ(fFile.put("d", 1), 1);
  EXPECT_FALSE(TiffFile::bufferingMode());
  EXPECT_EQ(fFile.beginPut("EEEE"), kFLnestedWrite); // by the engine
  TiffFile::setBufferingMode(true);
  EXPECT_EQ(fFile.endPut(), 0);
  EXPECT_EQ(fFile.beginPut("PROP"), 0);
  EXPECT_EQ(fFile.putString("x") + fFile.endPut(), 2);
  EXPECT_TRUE(TiffFile::bufferingMode());
  fFile.beginPut("FFFF");
  const std::string before =
    form(chunk("BBBB", "b", 4) + chunk("AAAA", "aa", 4) + chunk("CCCC", "c", 4) +
           chunk("DDDD", std::string(65537, 'd'), 4) + chunk("PROP", {"x\0", 2}, 4) + chunk("FFFF", ""),
         "LIS4");
  EXPECT_EQ(fFile.close(), 0); // with what is buffered
  EXPECT_TRUE(fBlock.compare(0, before.size(), before) == 0);
}

TEST_F(TiffBufferState, closingWritesAndQuickClosingDrops)
{
  writeGroup(fFile, {3});
  EXPECT_EQ(fFile.close(), 0);
  EXPECT_EQ(fBlock.substr(0, 25), form(chunk("AAAA", "aaa", 4), "FOR4") + "#");
  TiffFile::setBufferingMode(true);
  writeGroup(fOther, {3});
  TiffFile moved(std::move(fOther)); // the group goes with the file
  EXPECT_EQ(moved.quickClose(), 0);
  EXPECT_TRUE(fOtherBlock[0] == '#' && !TiffFile::bufferingMode());
  ASSERT_TRUE(moved.open(memoryName(fBlock.data(), fBlock.size()).c_str(), "w"));
  writeGroup(moved, {3, 5}, "FORM"); // unbuffered: the mode is used up
  EXPECT_EQ(moved.endWriteGroup(), 0);
}

// A group that does not fit, whatever part of it, is reported by some call, and by closing.
TEST(TiffBuffer, reportsEveryFailedWrite)
{
  const std::vector<std::vector<long>> groups = {{3, 0, 8}, {5, 70000, 4}};
  for (const auto& sizes : groups)
  {
    const std::size_t needed = sizes[1] == 0 ? 48 : 12 + 16 + 70008 + 12;
    for (std::size_t room = 0; room <= needed; room += room + 60 < needed && room > 60 ? 9001 : 1)
    {
      std::vector<char> block(room + 1, '#');
      TiffFile file(memoryName(block.data(), room).c_str(), "w");
      TiffFile::setBufferingMode(true);
      bool good = file.beginWriteGroup("FOR4", "TEST") == 0;
      for (const long size : sizes)
      {
        const std::string data(std::size_t(size), 'a');
        good = file.beginPut("AAAA") == 0 && good;
        good = file.put(data.data(), size) == size && good;
        good = file.endPut() == 0 && good;
      }
      good = file.endWriteGroup() == 0 && good;
      EXPECT_EQ(good, room >= needed) << room;
      EXPECT_FALSE(TiffFile::bufferingMode());
      EXPECT_EQ(file.endWriteGroup(), kFLnoGroup) << room; // nothing is left open
      EXPECT_EQ(file.close(), good ? 0 : -1) << room;
      EXPECT_EQ(block[room], '#');
    }
  }
}

#if FAILING_MEMORY
TEST(TiffBuffer, reportsEveryFailedAllocation)
{
  const std::string expected = form(chunk("AAAA", std::string(30000, 'a'), 4) + chunk("BBBB", "b", 4), "FOR4", 4);
  const std::string data(30000, 'a'), nothing(expected.size(), '#');
  std::string block;
  block.reserve(expected.size());
  const std::string name = memoryName(block.data(), expected.size());
  const int runs = forEachFailingAllocation([&] {
    TiffFile::freeBuffers();
    block = nothing;
    TiffFile file(name.c_str(), "w");
    if (!file.isActive())
      return;
    TiffFile::setBufferingMode(true);
    bool good = file.beginWriteGroup("FOR4", "TEST") == 0;
    good = file.beginPut("AAAA") == 0 && good;
    for (long i = 0; i < 30000; i += 1000)
      good = file.put(data.data(), 1000) == 1000 && good;
    good = file.endPut() == 0 && good;
    good = file.putChunk("BBBB", 1, "b") == 0 && good;
    const bool ended = file.endWriteGroup() == 0;
    EXPECT_FALSE(TiffFile::bufferingMode());
    EXPECT_EQ(file.close(), 0);
    // All of it is there, or nothing; what could not be put was said at the end again.
    EXPECT_TRUE(good || !ended);
    EXPECT_TRUE(block == (ended ? expected : nothing));
  });
  EXPECT_GT(runs, 30);
  TiffFile::freeBuffers();
}
#endif

} // namespace
