// flinspect as its user meets it: what it says of good, odd and hostile files, and what it leaves on the disk.

#include "tools/FlinspectRun.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

} // namespace

TEST_F(FlinspectTest, ReportsDepartures)
{
  const std::string body = chunk("BODY", "12");
  // Bytes, and the lines that report them without "flinspect: FILE: offset ".
  const std::pair<std::string, std::string> cases[] = {
    // Good files.
    {form(body), ""},
    {chunk("LIS8", "TEST" + chunk("PROP", "TEST" + chunk("NAME", "1", 8), 8) + chunk("NAME", "12345", 8), 8), ""},
    {chunk("LIST", "TEST" + form(body, "PROP") + form(body)), ""},
    {begun(kStreamed) + header("BODY", kStreamed) + "1234" + kEovc + kGend, ""},
    {begun(kUnknown) + header("BODY", kStreamed) + "12" + kEovc + "34" + kCvoe + kGend, ""},
    {begun(0x80000003) + begun(kStreamed, "LIST") + kGend + kGend + form(""), ""},
    {form("FORX\0\0\0\0"s), ""},
    // Padding.
    {begun(13) + "BODY\0\0\0\1x\0"s, "21: oddity: the padding of BODY is not counted in the size of FORM"},
    {begun(14) + "BODY\0\0\0\1x"s, "21: oddity: the file ends before the padding of BODY"},
    {form("BODY\0\0\0\1xy"s), "21: oddity: the padding of BODY is not zero"},
    {form("BODY\0\0\0\1x\0\0\0"s + body), "22: oddity: 2 bytes of padding more than the alignment asks for"},
    {form(body + "\0\0\0\0"s), "22: oddity: 2 bytes of padding more than the alignment asks for\n"
                               "24: oddity: 2 bytes at the end of FORM are too few for a chunk"},
    {form(body + "1234567"), "22: error: 7 bytes at the end of FORM are too few for a chunk"},
    // Sizes.
    {begun(0) + body, "0: oddity: the size of FORM stands for the rest of the file"},
    {begun(0x7F000050) + header("BODY", 0x7F000008) + "12345",
     "12: oddity: the size of BODY stands for the rest of the file\n"
     "0: oddity: the size of FORM stands for the rest of the file"},
    {begun(100) + body, "22: error: the file ends 86 bytes before the end of FORM"},
    {form(begun(40, "LIST") + body), "12: error: LIST goes 26 bytes past the end of FORM"},
    {form(header("LIST", 3) + "123\0"s + body), "12: error: LIST is too short for a type id"},
    {form(header("BODY", kPatched) + "12"), "12: error: the size of BODY was never filled in"},
    {form(header("BODY", 0xFFFFFFFF) + "12"), "12: error: the size of BODY, 0xFFFFFFFF, is no length and no mark"},
    {begun(kPatched) + body, "0: oddity: the size of FORM was never filled in\n"
                             "22: oddity: nothing marks the end of FORM"},
    {form(header("BODY", kStreamed) + "12345678"), "12: error: nothing marks the end of BODY"},
    // Marks and ids out of place.
    {form(body + kEovc + body), "22: oddity: an end marker that ends no chunk"},
    {form(body + kGend), "22: oddity: GEND in a group of known size"},
    {form(kGend + body), "12: error: GEND, but FORM goes on for 10 bytes"},
    {form(chunk("GEND", "1234")), "12: error: GEND with a size of 4"},
    {form(form(body, "PROP")), "12: error: PROP outside a list"},
    {form("PATH\0\0\0\0INCL\0\0\0\0FOR2\0\0\0\0"s), "12: error: PATH is reserved\n20: error: INCL is reserved\n"
                                                    "28: error: illegal use of the reserved id FOR2"},
    {chunk("FORM", "\x1B[2J\2bad\0\0\0\0"s), "8: oddity: the type id \\x1B\\x5B2J is not printable\n"
                                             "12: oddity: the id \\x02bad is not printable"},
    {chunk("FORM", "\23331m"), "8: error: the type id \\x9B31m begins with a byte above 0x7F"},
    // Around the groups.
    {"AT&T" + form(body), "0: oddity: \"AT&T\" in front of the first group"},
    {form(body) + "TAG", "22: oddity: 3 bytes behind the last group"},
    {form(body) + "TAG song by nobody", "22: oddity: other bytes behind the last group"},
    {"", "0: error: the file is empty"},
    {"FORM", "0: error: the file is too short for a group"},
    {form(body, "PROP"), "0: error: a file begins with a form, a concatenation or a list, not with PROP"},
  };

  for (const auto& [bytes, report] : cases)
  {
    SCOPED_TRACE(testing::PrintToString(bytes));
    const std::string file = write("case.iff", bytes), target = path("copy.iff");
    const auto linesFor = [&messages = report](const std::string& name) {
      std::string lines = messages.empty() ? "" : messages + '\n';
      for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1)
        lines.insert(at, "flinspect: " + name + ": offset ");
      return lines;
    };
    const int status = report.find("error") != std::string::npos;
    const Result strict = run({"check", "--strict", file});
    EXPECT_EQ(strict.status, report.empty() ? 0 : 1);
    EXPECT_EQ(strict.err, linesFor(file));
    // The same bytes from where nothing is known of the size.
#ifndef _WIN32
    const Result piped = shell("cat " + quote(file) + " | " + quote(FLINSPECT) + " check -");
#else
    const Result piped = run({"check", "-"}, file);
#endif
    EXPECT_EQ(piped.status, status);
    EXPECT_EQ(piped.err, linesFor("standard input"));

    // What is no error can be repaired, what is one leaves no file.
    EXPECT_EQ(run({"copy", file, target}).status, status);
    EXPECT_EQ(fs::exists(target), status == 0);
    if (!fs::exists(target))
      continue;
    const Result repaired = run({"check", target});
    EXPECT_EQ(repaired.err.find("oddity") == std::string::npos, bytes.find('\x1B') == std::string::npos)
      << repaired.err;
    EXPECT_TRUE(!report.empty() || bytes.find('\x80') != std::string::npos || read(target) == bytes);
    fs::remove(target);
  }
}

TEST_F(FlinspectTest, NoTruncationGoesUnnoticed)
{
  const std::string whole = read(SAMPLES "/scene.for4");
  ASSERT_EQ(whole.size(), 156U);
  std::vector<std::string> arguments = {"check"};
  for (std::size_t size = 0; size < whole.size() - 1; ++size) // the last byte is padding
  {
    arguments.push_back(write(std::to_string(size), whole.substr(0, size)));
    if (arguments.size() < 32 && size + 2 < whole.size())
      continue;
    const Result checked = run(arguments);
    const auto lines = std::size_t(std::count(checked.out.begin(), checked.out.end(), '\n'));
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(lines, arguments.size() - 1);
    EXPECT_EQ(checked.out.find(": valid"), std::string::npos) << checked.out;
    arguments.resize(1);
  }
}

TEST_F(FlinspectTest, TreeShowsTheNesting)
{
  const Result tree = run({SAMPLES "/scene-streamed.for4", path("none")});
  EXPECT_EQ(tree.status, 2); // the worst of both
  EXPECT_EQ(tree.out, SAMPLES "/scene-streamed.for4:\n"
                              "    offset       size pad  chunk\n"
                              "         0   streamed   -  FOR4 SCEN  form\n"
                              "        12   streamed   -    NAME  name\n"
                              "        36   streamed   -    FOR4 SHAP  form: shape\n"
                              "        48          4   0      NAME  name\n");
  EXPECT_EQ(tree.err.find("flinspect: " + path("none") + ": "), 0U) << tree.err;

  EXPECT_NE(run({"--color=always", SAMPLES "/stripes.ilbm"}).out.find("\x1b[1;34mFORM\x1b[m"), std::string::npos);

  std::string deep;
  for (int level = 0; level < 40; ++level)
    deep = form(deep);
  EXPECT_NE(run({write("deep.iff", deep)}).out.find("       468          4   0  " + std::string(64, ' ') + "(+7) FORM"),
            std::string::npos);
}

TEST_F(FlinspectTest, ShowsValues)
{
  const std::string many(80, '\0');
  const std::string file = write("values.iff", form(chunk("DBLE", "\xC0\x04\0\0\0\0\0\0"s) + chunk("LNG2", "short") +
                                                    chunk("TIME", "\0\0\x23\x28"s) + chunk("DBL#", many) +
                                                    chunk("NOTE", "12345678") + header("SRT2", 4) + "\0\1\0"s));
  const Result tree = run({file});
  std::string values;
  std::istringstream lines(tree.out);
  for (std::string line; std::getline(lines, line);)
    values += line.substr(std::min(line.size(), std::size_t(29))) + '|';
  EXPECT_EQ(values, "unk|RM TEST  form|DBLE = -2.5|LNG2|TIME = 9000t|DBL# = doubleArray 10 0 0 0 0 0 0 0 0 0 0|NOTE|SRT2|");
  EXPECT_NE(tree.err.find("error: SRT2 goes"), std::string::npos) << tree.err;
  const std::string json = run({"json", file}).out;
  EXPECT_NE(json.find(R"("length":8,"value":"-2.5"})"), std::string::npos) << json;
  EXPECT_EQ(json.find("NOTE\",\"value"), std::string::npos);
}

TEST_F(FlinspectTest, DumpFindsTheChunk)
{
  const std::string file =
    write("paths.iff", form(form(chunk("BODY", "one"), "LIST") + chunk("BODY", "two") +
                            form(chunk("BODY", "three") + chunk("BODY", "four"), "LIST") + chunk("a/[\xFF", "odd")) +
                         form(chunk("BODY", "five") + chunk("AB  ", "ab"), "CAT "));
  const std::pair<const char*, const char*> cases[] = {
    {"FORM/LIST/BODY", "one"},        {"FORM/BODY", "two"},    {"FORM/LIST[2]/BODY[2]", "four"},
    {R"(FORM/a\x2f\x5B\xFF)", "odd"}, {"CAT/BODY[1]", "five"}, {"CAT /AB", "ab"},
  };
  for (const auto& [name, data] : cases)
  {
    const Result dumped = run({"dump", file, name});
    EXPECT_EQ(dumped.status, 0) << name << dumped.err;
    EXPECT_EQ(dumped.out.substr(std::min<std::size_t>(dumped.out.size(), 51)), data + "\n"s) << name;
  }
  for (const char* none :
       {"FORM/LIST/BODY[2]", "FORM/LIST", "FORM/BODY[0]", "FORM/BODY[9999999999]", "", "FORM/BODY]", "FORM/\\x4"})
  {
    const Result dumped = run({"dump", file, none});
    EXPECT_EQ(std::to_string(dumped.status) + dumped.out, "2") << none;
  }
}

TEST_F(FlinspectTest, DiffPairsChunks)
{
  const std::string name = chunk("NAME", "n"), body = chunk("BODY", "1234"), date = chunk("DATE", "");
  std::string many; // more than are looked at to find a pair
  for (char last = 'a'; last <= 'z'; ++last)
    many += chunk(std::string("ID1") + last, "") + chunk(std::string("ID2") + last, "");
  const std::tuple<std::string, std::string, std::string> cases[] = {
    {form(body), "AT&T" + begun(kStreamed) + header("BODY", kStreamed) + "1234" + kEovc + kGend + "tail", ""},
    {form(name + body + body), form(name + body + chunk("BODY", "12x4")), "FORM/BODY[2]: differs from offset 2 on\n"},
    {form(form(body)), form(form(chunk("BODY", "12345"))), "FORM/FORM/BODY: differs from offset 4 on, 4 and 5 bytes\n"},
    {form(chunk("BODY", std::string(70000, 'x'))), form(chunk("BODY", std::string(69999, 'x') + 'y')),
     "FORM/BODY: differs from offset 69999 on\n"},
    {form(name + body + date), form(chunk("BODY", "") + name + chunk("BODY", "5") + date),
     "FORM/BODY: only in B\nFORM/BODY (FORM/BODY[2] in B): differs from offset 0 on, 4 and 1 bytes\n"},
    {form(name + form(body) + date) + form(""), form(name + date), "FORM/FORM: only in A\nFORM[2]: only in A\n"},
    {form(name), form(date + name + date), "FORM/DATE: only in B\nFORM/DATE[2]: only in B\n"},
    {chunk("FORM", "ONE " + body), form(body, "LIST") + chunk("FORM", "TWO " + date),
     "FORM: only in A\nLIST: only in B\nFORM: only in B\n"},
    {chunk("FORM", "ONE " + body), chunk("FORM", "TWO " + date),
     "FORM: type ONE  and TWO \nFORM/BODY: only in A\nFORM/DATE: only in B\n"},
  };
  for (const auto& [a, b, differences] : cases)
  {
    const std::string nameA = write("a", a), nameB = write("b", b);
    std::string expected = differences;
    for (const auto& [mark, file] : {std::pair("only in A", nameA), {"only in B", nameB}, {" in B)", nameB}})
    {
      for (std::size_t at = 0; (at = expected.find(mark, at)) != std::string::npos;)
        expected.replace(expected.find_first_of("AB", at), 1, file);
    }
    const Result result = run({"diff", nameA, nameB});
    EXPECT_EQ(result.out, expected);
    EXPECT_EQ(result.status, !expected.empty());
    EXPECT_EQ(run({"diff", "-", nameA}, nameA).status, 0);
  }
  // Whatever is paired, every chunk that has none in the other file is told.
  const Result far = run({"diff", write("a", form(many + name)), write("b", form(name))});
  EXPECT_EQ(std::count(far.out.begin(), far.out.end(), '\n'), 54);
  const Result wrong = run({"diff", write("a", form(body)), write("b", begun(100) + body)});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_NE(wrong.err.find(path("b") + ": not compared\n"), std::string::npos) << wrong.err;
}

TEST_F(FlinspectTest, EventsOfAParse)
{
  const std::string file =
    write("events", chunk("LIST", "TEST" + form(chunk("NAME", "123"), "PROP") + form("")) + form(header("BODY", 9)));
  const Result events = run({"events", file});
  EXPECT_EQ(events.status, 1);
  EXPECT_EQ(events.out, "list LIST TEST\n"
                        "  form PROP TEST\n"
                        "    leaf NAME 3\n"
                        "  leaf GEND 0\n"
                        "  form FORM TEST\n"
                        "  leaf GEND 0\n"
                        "leaf GEND 0\n"
                        "form FORM TEST\n");
  // Where a parse stops.
  const std::pair<std::string, const char*> stops[] = {
    {file, "60: error: bad size, in FORM at offset 48\n"},
    {SAMPLES "/tone.aiff", "490: error: bad block, behind SSND at offset 72\n"},
    {SAMPLES "/scene-streamed.for4", "76: error: no end marker, in NAME at offset 12\n"},
    {write("behind", form(form("")) + "surplus bytes"), "24: error: bad root block, behind FORM at offset 0\n"},
    {write("nothing", "surplus bytes"), "0: error: bad root block\n"},
    {write("cut", form(chunk("BODY", "1234")).substr(0, 22)), "22: error: the file ends, in BODY at offset 12\n"}};
  for (const auto& [name, message] : stops)
  {
    const Result stopped = run({"events", name});
    EXPECT_EQ(stopped.err, "flinspect: " + name + ": offset " + message);
    EXPECT_EQ(stopped.status, 1);
  }
  const Result streamed = run({"events", "-"}, write("streamed", begun(kUnknown) + kGend));
  EXPECT_EQ(std::to_string(streamed.status) + streamed.out, "0form FORM TEST\nleaf GEND 0\nleaf GEND 0\n");
}

TEST_F(FlinspectTest, JsonOfAnyBytes)
{
  const std::string file =
    write("any.iff", chunk("FORM", "T\"\\\x7F" + header("\xFF\x01 /", 3) + "123x" + begun(kStreamed, "LIST")));
  EXPECT_EQ(run({"json", "-"}, file).out,
            R"({"schema":1,"file":"standard input","entries":[
{"kind":"oddity","offset":8,"message":"the type id T\"\\x5C\\x7F is not printable"},
{"kind":"group","depth":0,"id":"FORM","type":"T\"\\\u007f","offset":0,"size":28,"alignment":2,"padding":0},
{"kind":"oddity","offset":12,"message":"the id \\xFF\\x01 \\x2F is not printable"},
{"kind":"chunk","depth":1,"id":"\u00ff\u0001 /","offset":12,"size":3,"alignment":2,"padding":1,"length":3},
{"kind":"oddity","offset":23,"message":"the padding of \\xFF\\x01 \\x2F is not zero"},
{"kind":"group","depth":1,"id":"LIST","type":"TEST","offset":24,"size":null,"alignment":2,"padding":null},
{"kind":"oddity","offset":36,"message":"nothing marks the end of LIST"},
{"kind":"end","depth":1,"offset":24,"length":4},
{"kind":"end","depth":0,"offset":0,"length":28}
],"oddities":4,"errors":0,"valid":true}
)");
}

TEST_F(FlinspectTest, ExtractStaysInItsDirectory)
{
  const std::string file = write(
    "names.iff", form(chunk("../x", "1") + chunk("COM1", "2") + chunk("com1", "3") +
                      form(chunk("a\\b:", "4") + header("BODY", kStreamed) + "12345678" + kEovc) + chunk("COM1", "5")));
  const std::string directory = path("some/where");
  const Result all = run({"extract", file, "-d", directory});
  EXPECT_EQ(all.status, 0) << all.err;
  std::map<std::string, std::string> found;
  for (const auto& entry : fs::recursive_directory_iterator(path("some")))
    found[fs::relative(entry.path(), directory).string()] = entry.is_regular_file() ? read(entry.path().string()) : "";
  const std::map<std::string, std::string> expected = {{".", ""},
                                                       {"000001-___x", "1"},
                                                       {"000002-COM1", "2"},
                                                       {"000003-com1", "3"},
                                                       {"000004-a_b_", "4"},
                                                       {"000005-BODY", "12345678"},
                                                       {"000006-COM1", "5"}};
  EXPECT_EQ(found, expected);

  // Nothing is overwritten.
  write("some/where/000001-___x", "mine");
  EXPECT_EQ(run({"extract", file, "-d", directory}).status, 2);
  EXPECT_EQ(read("some/where/000001-___x"), "mine");

  EXPECT_EQ(run({"extract", file, "FORM/FORM", "FORM/COM1[2]", "-d", path("few")}).status, 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(path("few")), {}), 3);
  EXPECT_EQ(read("few/000006-COM1"), "5");
  EXPECT_EQ(run({"extract", file, "FORM/NONE", "-d", path("none")}).status, 2);
}

TEST_F(FlinspectTest, CopyIsAllOrNothing)
{
  EXPECT_EQ(run({"copy", "-", "-"}, SAMPLES "/stripes.ilbm").out, read(SAMPLES "/stripes.ilbm"));
  // A valid file of unknown sizes, then itself and one that is not valid, onto a file that is there.
  EXPECT_EQ(run({"copy", SAMPLES "/scene-streamed.for4", path("copy")}).status, 0);
  EXPECT_EQ(run({"copy", path("copy"), path("copy")}).status, 2);
  const std::string exact =
    chunk("FOR4", "SCEN" + chunk("NAME", "scene\0\0\0"s) + chunk("FOR4", "SHAP" + chunk("NAME", "cube")));
  EXPECT_EQ(read("copy"), exact);
  EXPECT_EQ(run({"copy", write("bad", exact.substr(0, 50)), path("copy")}).status, 1);
  EXPECT_EQ(read("copy"), exact);
  EXPECT_EQ(run({"copy", SAMPLES "/scene.for4", path("no/where")}).status, 2);
  EXPECT_EQ(std::distance(fs::directory_iterator(path("")), {}), 4); // "copy", "bad" and what flinspect said
}

TEST_F(FlinspectTest, Usage)
{
  const std::string sample = SAMPLES "/stripes.ilbm";
  // What it prints: on standard output, or on standard error where the status is 2.
  const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
    {{"--version"}, 0, "flinspect "},
    {{"--help"}, 0, "Shows"},
    {{"check", sample}, 0, sample + ": valid, 1 group, 3 chunks\n"},
    {{}, 2, "flinspect: "},
    {{"--wrong", sample}, 2, "flinspect: "},
    {{"--wrong"}, 2, "flinspect: The following argument was not expected: --wrong\n"},
    {{"tree", "--"}, 2, "flinspect: FILE is required\n"},
    {{"--color=sometimes", sample}, 2, "flinspect: "},
    {{"extract", sample}, 2, "flinspect: "},
    {{"copy", sample, path("x"), path("y")}, 2, "flinspect: "},
    {{"check", path(".")}, 2, "flinspect: " + path(".") + ": not a file\n"},
    {{"diff", "-", "-"}, 2, "flinspect: standard input: "},
    {{"check", "|echo"}, 2, "flinspect: |echo: "},
    {{"check", "--open-forms", "mem:4096,8"}, 2, "flinspect: mem:4096,8: bad file name\n"}};
  for (const auto& [arguments, status, starts] : cases)
  {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, status) << testing::PrintToString(arguments);
    EXPECT_EQ((status == 2 ? result.err : result.out).substr(0, starts.size()), starts);
  }
}
