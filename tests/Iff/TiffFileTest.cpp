#include "Foundation/Iff/TiffFile.h"
#include "tests/Iff/Recorder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>

namespace {

using namespace std::string_literals;

const std::string kNested =
  form(chunk("AAAA", "1") + form(chunk("BBBB", "2") + chunk("CCCC", "3")) + chunk("DDDD", "4")) +
  form(form(chunk("EEEE", "5"), "PROP") + form("", "CAT "), "LIST");
const std::string kFirst = "FORM:TEST[AAAA=1 FORM:TEST[BBBB=2 CCCC=3 ]DDDD=4 ]";
const std::string kSecond = "LIST:TEST[PROP:TEST[EEEE=5 ]CAT :TEST[]]]";

// What each event is, and who is asked.
TEST(TiffFile, asksReceiverOrFunctions)
{
  struct Sets : TiffParserCallback
  {
    std::string fCalls;
    int call(const char* name) { return fCalls += name, 0; }
    int iffVListMethod1(TiffFile&, TiffTag, TiffTag) override { return call("L1 "); }
    int iffVFormMethod1(TiffFile&, TiffTag, TiffTag) override { return call("F1 "); }
    int iffVLeafMethod1(TiffFile&, TiffTag, Tint32) override { return call("1 "); }
    int iffVListMethod2(TiffFile&, TiffTag, TiffTag) override { return call("L2 "); }
    int iffVFormMethod2(TiffFile&, TiffTag, TiffTag) override { return call("F2 "); }
    int iffVLeafMethod2(TiffFile&, TiffTag, Tint32) override { return call("2 "); }
    int iffVListMethod3(TiffFile&, TiffTag, TiffTag) override { return call("L3 "); }
    int iffVFormMethod3(TiffFile&, TiffTag, TiffTag) override { return call("F3 "); }
    int iffVLeafMethod3(TiffFile&, TiffTag, Tint32) override { return call("3 "); }
  } receiver;
  static std::string calls;
  const std::string bytes = form(form(chunk("AAAA", "1"), "CAT ") + form("", "PROP"), "LIST");
  TiffFile file;
  file.setFormCallback([](TiffFile&, TiffTag, TiffTag type) { return calls += "form " + text(type.value()), 0; });
  file.setListCallback([](TiffFile&, TiffTag group, TiffTag) { return calls += "list " + text(group.value()), 0; });
  file.setLeafCallback([](TiffFile&, TiffTag, Tint32 size) { return calls += " leaf " + std::to_string(size), 0; });
  file.setCallbackObject(&receiver);
  for (const int set : {1, 2, 3, 4, 0})
  {
    ASSERT_TRUE(file.reopen(memoryName(bytes.data(), bytes.size()).c_str(), "r"));
    receiver.setMethodsToUse(set);
    EXPECT_EQ(file.parse(), 0) << set;
  }
  EXPECT_EQ(receiver.fCalls, "L1 L1 1 1 F1 1 1 1 L2 L2 2 2 F2 2 2 2 L3 L3 3 3 F3 3 3 3 ");
  file.setCallbackObject(nullptr);
  ASSERT_TRUE(file.reopen(memoryName(bytes.data(), bytes.size()).c_str(), "r"));
  EXPECT_EQ(file.endParse(), 1);
  EXPECT_EQ(calls, "list LISTlist CAT  leaf 1 leaf 0form TEST leaf 0 leaf 0 leaf 0");
}

TEST(TiffFile, doesWhatItIsAnswered)
{
  // What is answered to which event, or 100 and 101: what the callback does; the status and error; what is announced.
  const std::tuple<const char*, int, int, int, std::string> cases[] = {
    {"", 0, 0, -1, kFirst + kSecond},
    {"BBBB=2 ", 47, 47, -1, "FORM:TEST[AAAA=1 FORM:TEST[BBBB=2 "},
    {"FORM:TEST[", 16, 16, 16, "FORM:TEST["},
    // 1 ends the level, without a "GEND".
    {"PROP:TEST[", 1, 0, -1, kFirst + "LIST:TEST[PROP:TEST[]"},
    {"CAT :TEST[", 101, 0, -1, kFirst + "LIST:TEST[PROP:TEST[EEEE=5 ]CAT :TEST[]"},
    // Parsed by the callback, the end of the list is announced twice.
    {"LIST:TEST[", 100, 0, -1, kFirst + "LIST:TEST[PROP:TEST[EEEE=5 ]CAT :TEST[]]]]"},
  };
  for (const auto& [at, answer, status, error, events] : cases)
  {
    Recorder recorder;
    recorder.fAnswer = [&at = at, &answer = answer](const std::string& event, TiffFile& file) {
      if (event != at)
        return 0;
      return answer == 100 ? file.parse() : answer == 101 ? file.endReadGroup() + 1 : answer;
    };
    TiffFile file(memoryName(kNested.data(), kNested.size()).c_str(), "r");
    file.setCallbackObject(&recorder);
    flerrno = -1;
    EXPECT_TRUE(file.parse() == status && file.error() == error) << events;
    EXPECT_EQ(recorder.fEvents, events);
  }
}

TEST(TiffFile, reportsWhatIsWrongInAFile)
{
  const std::pair<std::string, const char*> cases[] = {
    {"FORM\0\0\0\x10TE"s, ""}, // what is no group yet
    {begun(20) + "FORM\0\0\0\x08TE"s, "FORM:TEST[8"},
    {begun(6) + "AA", "FORM:TEST[5"},
    {header("AAAA", 4) + "1234", "12"},
    {form(form("", "FOR3")), "FORM:TEST[34"},
    {form(header("AAAA", kPatched) + "1234"), "FORM:TEST[AAAA=1234 27"},
    {form(header("AAAA", kStreamed) + "1234" + kEovc), "FORM:TEST[AAAA=1234 15"},
    {form(kGend + chunk("AAAA", "1")), "FORM:TEST[19"},
  };
  for (const auto& [bytes, events] : cases)
  {
    flerrno = 0;
    EXPECT_EQ(eventsOf(bytes), events);
    EXPECT_EQ(flerrno != 0, *events != 0) << events;
  }
}

TEST(TiffFile, walksAMillionNestedGroups)
{
  constexpr int kDepth = 1000000;
  std::string bytes;
  for (int i = kDepth; i > 0; --i)
    bytes += begun(i * 12 - 8);
  static int forms, ends;
  TiffFile file(memoryName(bytes.data(), bytes.size()).c_str(), "r");
  file.setFormCallback([](TiffFile&, TiffTag, TiffTag) { return ++forms, 0; });
  file.setLeafCallback([](TiffFile&, TiffTag id, Tint32) { return ends += id == TiffTag::kGEND, 0; });
  EXPECT_EQ(file.parse(), 0);
  EXPECT_TRUE(forms == kDepth && ends == kDepth + 1) << forms << " " << ends;
}

TEST(TiffFile, ownsItsFile)
{
  const Scratch scratch;
  const std::string path = scratch.path("file"), other = scratch.write("other", kNested);
  TiffFile file;
  EXPECT_TRUE(!file.isActive() && file.close() == -1 && file.quickClose() == -1 && file.parse() == kFLbadCall);
  ASSERT_TRUE(file.open(path.c_str(), "w"));
  EXPECT_TRUE(!file.open(other.c_str(), "r") && file.error() == kFLinUse);
  EXPECT_EQ(file.beginWriteGroup("FORM", "TEST"), 0);
  TiffFile moved(std::move(file));
  EXPECT_TRUE(moved.reopen(path.c_str(), "w")); // completes the group
  EXPECT_TRUE(moved.beginWriteGroup("FORM", "TEST") == 0 && moved.quickClose() == 0);
  EXPECT_EQ(scratch.read("file"), begun(kPatched));
  ASSERT_TRUE(moved.open(path.c_str(), "w") && moved.setTmp() == 0);
  EXPECT_EQ(moved.initInheritance(FLopen(other.c_str(), "r")), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_TRUE(moved.skipGroup() == 0 && !moved.reopen(path.c_str(), "r") && !moved.isActive());
}

TEST(TiffFile, readsAndWritesChunksByTheirParts)
{
  char block[200] = {};
  TiffFile file(memoryName(block, sizeof block).c_str(), "w");
  file.beginWriteGroup("FOR4", "TEST");
  EXPECT_EQ(file.putTypedChunk("TYPD", 5, "12345", 0x01020304), 0);
  EXPECT_EQ(file.putTypedChunk("TYPD", 0x7FFFFFFC, "", 0), kFLbadSize);
  EXPECT_EQ(file.putChunk("TYPD", 3, "123"), 0);
  file.beginPut("TEXT", 21);
  EXPECT_EQ(file.putString("one") + file.putString("twofold", 3), 8); // the eighth byte is a zero, not the "f"
  EXPECT_EQ(file.putString("a long text") + file.put("!", 1), 13);
  EXPECT_EQ(file.putString("1"), 0); // no room, and nothing of it is written
  EXPECT_EQ(file.close(), 0);

  ASSERT_TRUE(file.open(memoryName(block, sizeof block).c_str(), "r"));
  TiffTag id;
  Tint32 size = 0;
  TuInt32 type = 0;
  ASSERT_EQ(file.beginReadGroup(id), 0);
  EXPECT_EQ(std::memcmp(file.getTypedChunk(id, &size, &type), "12345", 5), 0);
  EXPECT_TRUE(id == "TYPD" && size == 5 && type == 0x01020304);
  EXPECT_TRUE(!file.readTypedChunk(&size, &type) && file.error() == kFLnoChunk);
  EXPECT_EQ(file.beginGet(id, &size), 0);
  EXPECT_TRUE(!file.readTypedChunk(&size, &type) && file.error() == kFLbadSize);
  EXPECT_EQ(file.beginGet(id, &size), 0);
  char text[5];
  const std::pair<long, const char*> texts[] = {{4, "one"}, {4, "two"}, {12, "a lo"}, {1, "!"}, {0, ""}};
  for (const auto& [taken, read] : texts)
  {
    flerrno = 0;
    EXPECT_TRUE(file.getString(text, sizeof text) == taken && std::string(text) == read) << read;
    EXPECT_EQ(file.error(), taken > 1 ? 0 : int(kFLpastBlock)) << read;
  }
  EXPECT_TRUE(file.unget("!", 1) == 0 && file.getString(text, 0) == 0 && file.error() == kFLbadSize);
  EXPECT_TRUE(file.getString(text, 1) == 1 && !*text);
}

} // namespace
