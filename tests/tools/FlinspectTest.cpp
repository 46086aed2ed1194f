// flinspect as its user meets it: what it says of good, odd and hostile files, and what it leaves on the disk.

#include "tools/FlinspectRun.h"

#include <algorithm>

namespace {

namespace fs = std::filesystem;

// A form of the type TEST.
std::string form(const std::string& content, const std::string& id = "FORM")
{
  return chunk(id, "TEST" + content);
}

const std::string kStreamed = word(0x80000002);
const std::string kMark = word(0x80000000);
const std::string kGend = header("GEND", 0);

} // namespace

TEST_F(FlinspectTest, ReportsDepartures)
{
  const std::string body = chunk("BODY", "12");
  const struct
  {
    std::string bytes;
    int status;
    std::string report; // lines without "flinspect: FILE: offset "
  } cases[] = {
    // Good files.
    {form(body), 0, ""},
    {form("") + form(body, "CAT "), 0, ""},
    {chunk("LIS8", "TEST" + chunk("PROP", "TEST" + chunk("NAME", "1", 8), 8) + chunk("NAME", "12345", 8), 8), 0, ""},
    {chunk("LIST", "TEST" + form(body, "PROP") + form(body)), 0, ""},
    {header("FORM", 0x80000002) + "TEST" + "BODY" + kStreamed + "1234EOVC" + kMark + kGend, 0, ""},
    {header("FORM", 0x80000000) + "TESTBODY" + kStreamed + "12EOVC" + kMark + "34CVOE" + kMark + kGend, 0, ""},
    {header("FORM", 0x80000003) + "TEST" + header("LIST", 0x80000002) + "TEST" + kGend + kGend + form(""), 0, ""},
    {form(raw("FORX\0\0\0\0")), 0, ""},
    // Padding.
    {header("FORM", 13) + "TEST" + raw("BODY\0\0\0\1x\0"), 0,
     "21: oddity: the padding of BODY is not counted in the size of FORM"},
    {header("FOR4", 14) + "TEST" + raw("BODY\0\0\0\1x\0\0\0"), 0,
     "21: oddity: the padding of BODY is not counted in the size of FOR4"},
    {header("FORM", 14) + "TEST" + raw("BODY\0\0\0\1x"), 0, "21: oddity: the file ends before the padding of BODY"},
    {form(raw("BODY\0\0\0\1xy")), 0, "21: oddity: the padding of BODY is not zero"},
    {form(raw("BODY\0\0\0\1x\0\0\0") + body), 0, "22: oddity: 2 bytes of padding more than the alignment asks for"},
    {header("FORM", 0x80000002) + "TEST" + chunk("BODY", "1234") + chunk("BODY", "12") + kGend + raw("\0\0"), 0,
     "42: oddity: 2 bytes of padding more than the alignment asks for"},
    {form(body + raw("\0\0\0\0")), 0,
     "22: oddity: 2 bytes of padding more than the alignment asks for\n"
     "24: oddity: 2 bytes at the end of FORM are too few for a chunk"},
    {form(body + "1234567"), 1, "22: error: 7 bytes at the end of FORM are too few for a chunk"},
    // Sizes.
    {header("FORM", 0) + "TEST" + body, 0, "0: oddity: the size of FORM stands for the rest of the file"},
    {header("FORM", 0x7F000050) + "TEST" + header("BODY", 0x7F000008) + "12345", 0,
     "12: oddity: the size of BODY stands for the rest of the file\n"
     "0: oddity: the size of FORM stands for the rest of the file"},
    {header("FORM", 100) + "TEST" + body, 1, "22: error: the file ends 86 bytes before the end of FORM"},
    {form(header("BODY", 0x7FFFFFFF) + "12"), 1, "12: error: BODY goes 2147483645 bytes past the end of FORM"},
    {form(header("LIST", 40) + "TEST" + body), 1, "12: error: LIST goes 26 bytes past the end of FORM"},
    {form(header("LIST", 3) + "123" + raw("\0") + body), 1, "12: error: LIST is too short for a type id"},
    {form(header("BODY", 0x80000001) + "12"), 1, "12: error: the size of BODY was never filled in"},
    {form(header("BODY", 0xFFFFFFFF) + "12"), 1, "12: error: the size of BODY, 0xFFFFFFFF, is no length and no mark"},
    {header("FORM", 0x80000001) + "TEST" + body, 0,
     "0: oddity: the size of FORM was never filled in\n"
     "22: oddity: nothing marks the end of FORM"},
    {form("BODY" + kStreamed + "12345678"), 1, "12: error: nothing marks the end of BODY"},
    // Marks and ids out of place.
    {form(body + "EOVC" + kMark + body), 0, "22: oddity: an end marker that ends no chunk"},
    {form(body + kGend), 0, "22: oddity: GEND in a group of known size"},
    {form(kGend + body), 1, "12: error: GEND, but FORM goes on for 10 bytes"},
    {form(chunk("GEND", "1234")), 1, "12: error: GEND with a size of 4"},
    {form(form(body, "PROP")), 1, "12: error: PROP outside a list"},
    {form(raw("PATH\0\0\0\0INCL\0\0\0\0FOR2\0\0\0\0")), 1,
     "12: error: PATH is reserved\n20: error: INCL is reserved\n"
     "28: error: illegal use of the reserved id FOR2"},
    {chunk("FORM", raw("\x1B[2J\2bad\0\0\0\0")), 0,
     "8: oddity: the type id \\x1B\\x5B2J is not printable\n"
     "12: oddity: the id \\x02bad is not printable"},
    {chunk("FORM", "\x9B"
                   "31m"),
     1, "8: error: the type id \\x9B31m begins with a byte above 0x7F"},
    // Around the groups.
    {"AT&T" + form(body), 0, "0: oddity: \"AT&T\" in front of the first group"},
    {form(body) + "TAG", 0, "22: oddity: 3 bytes behind the last group"},
    {form(body) + "TAG song by nobody", 0, "22: oddity: other bytes behind the last group"},
    {"", 1, "0: error: the file is empty"},
    {"FORM", 1, "0: error: the file is too short for a group"},
    {form(body, "PROP"), 1, "0: error: a file begins with a form, a concatenation or a list, not with PROP"},
  };

  for (const auto& [bytes, status, report] : cases)
  {
    const std::string file = write("case.iff", bytes);
    SCOPED_TRACE(testing::PrintToString(bytes));
    const auto linesFor = [&messages = report](const std::string& name) {
      std::string lines = messages.empty() ? "" : messages + '\n';
      for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1)
        lines.insert(at, "flinspect: " + name + ": offset ");
      return lines;
    };
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
    const std::string target = scratch("copy.iff");
    EXPECT_EQ(run({"copy", file, target}).status, status);
    EXPECT_EQ(fs::exists(target), status == 0);
    if (status == 0)
    {
      const Result repaired = run({"check", target});
      EXPECT_EQ(repaired.err.find("oddity") == std::string::npos, bytes.find('\x1B') == std::string::npos)
        << repaired.err;
      if (report.empty() && bytes.find(kMark[0]) == std::string::npos)
      {
        EXPECT_EQ(contents(target), bytes);
      }
      fs::remove(target);
    }
  }
}

TEST_F(FlinspectTest, NoTruncationGoesUnnoticed)
{
  const std::string whole = contents(SAMPLES "/scene.for4");
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
  const Result tree = run({SAMPLES "/scene-streamed.for4", scratch("none"), SAMPLES "/stripes.ilbm"});
  EXPECT_EQ(tree.status, 2); // the worst of three
  EXPECT_EQ(tree.out, SAMPLES "/scene-streamed.for4:\n"
                              "    offset       size pad  chunk\n"
                              "         0   streamed   -  FOR4 SCEN\n"
                              "        12   streamed   -    NAME\n"
                              "        36   streamed   -    FOR4 SHAP\n"
                              "        48          4   0      NAME\n"
                              "\n" SAMPLES "/stripes.ilbm:\n"
                              "    offset       size pad  chunk\n"
                              "         0         86   0  FORM ILBM\n"
                              "        12         20   0    BMHD\n"
                              "        40          6   0    CMAP\n"
                              "        54         32   0    BODY\n");
  EXPECT_EQ(tree.err.find("flinspect: " + scratch("none") + ": "), 0U) << tree.err;
  EXPECT_NE(run({"--color=always", SAMPLES "/stripes.ilbm"}).out.find("\x1b[1;34mFORM\x1b[m"), std::string::npos);

  std::string deep;
  for (int level = 0; level < 40; ++level)
    deep = form(deep);
  EXPECT_NE(run({write("deep.iff", deep)}).out.find("       468          4   0  " + std::string(64, ' ') + "(+7) FORM"),
            std::string::npos);
}

TEST_F(FlinspectTest, DumpFindsTheChunk)
{
  const std::string odd = chunk("a/[\xFF", "odd");
  const std::string file =
    write("paths.iff",
          form(chunk("LIST", "TEST" + chunk("BODY", "one")) + chunk("BODY", "two") +
               chunk("LIST", "TEST" + chunk("BODY", "three") + chunk("BODY", "four")) + odd + chunk("AB  ", "ab")) +
            form(chunk("BODY", "five") + chunk("AB  ", "ab"), "CAT "));
  const struct
  {
    const char* path;
    const char* data; // null when there is no such chunk
  } cases[] = {{"FORM/LIST/BODY", "one"},
               {"FORM/BODY", "two"},
               {"FORM/LIST[2]/BODY[2]", "four"},
               {R"(FORM/a\x2f\x5B\xFF)", "odd"},
               {"CAT/BODY[1]", "five"},
               {"CAT /AB", "ab"},
               {"FORM/LIST/BODY[2]", nullptr},
               {"FORM/LIST", nullptr},
               {"FORM/BODY/BODY", nullptr},
               {"FORM[2]/BODY", nullptr},
               {"FORM/BODY[0]", nullptr},
               {"FORM//BODY", nullptr},
               {"FORM/BODY[9999999999]", nullptr},
               {"", nullptr},
               {"FORM/BODY]", nullptr},
               {"FORM/\\x4", nullptr}};
  for (const auto& [path, data] : cases)
  {
    const Result dumped = run({"dump", file, path});
    EXPECT_EQ(dumped.status, data ? 0 : 2) << path << dumped.err;
    EXPECT_EQ(dumped.out.substr(std::min<std::size_t>(dumped.out.size(), 51)), data ? data + std::string("\n") : "")
      << path;
  }
  EXPECT_EQ(run({"dump", SAMPLES "/tone.aiff", "FORM/COMM"}).out,
            "00000000: 0001 0000 0191 0008 400b fa00 0000 0000  ........@.......\n"
            "00000010: 0000                                     ..\n");
}

TEST_F(FlinspectTest, JsonOfAnyBytes)
{
  const std::string file = write("any.iff", chunk("FORM", "T\"\\\x7F" + header("\xFF\x01 /", 3) + raw("123x") +
                                                            header("LIST", 0x80000002) + "TEST"));
  const Result json = run({"json", "-"}, file);
  EXPECT_EQ(json.status, 0);
  EXPECT_EQ(json.out,
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
                      form(chunk("a\\b:", "4") + "BODY" + kStreamed + "12345678EOVC" + kMark) + chunk("COM1", "5")));
  const std::string directory = scratch("some/where");
  const Result all = run({"extract", file, "-d", directory});
  EXPECT_EQ(all.status, 0) << all.err;
  const std::vector<std::pair<std::string, std::string>> expected = {{"000001-___x", "1"},        {"000002-COM1", "2"},
                                                                     {"000003-com1", "3"},        {"000004-a_b_", "4"},
                                                                     {"000005-BODY", "12345678"}, {"000006-COM1", "5"}};
  std::size_t found = 0;
  for (const auto& entry : fs::recursive_directory_iterator(scratch("some")))
    found += entry.is_regular_file() ? 1 : 0;
  EXPECT_EQ(found, expected.size());
  for (const auto& [name, data] : expected)
    EXPECT_EQ(contents(fs::path(directory) / name), data) << name;

  // Nothing is overwritten.
  write("some/where/000001-___x", "mine");
  EXPECT_EQ(run({"extract", file, "-d", directory}).status, 2);
  EXPECT_EQ(contents(scratch("some/where/000001-___x")), "mine");

  EXPECT_EQ(run({"extract", file, "FORM/FORM", "FORM/COM1[2]", "-d", scratch("few")}).status, 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch("few")), fs::directory_iterator()), 3);
  EXPECT_EQ(contents(scratch("few/000006-COM1")), "5");
  EXPECT_EQ(run({"extract", file, "FORM/NONE", "-d", scratch("none")}).status, 2);
}

TEST_F(FlinspectTest, CopyIsAllOrNothing)
{
  for (const char* sample : {SAMPLES "/stripes.ilbm", SAMPLES "/scene.for4"})
  {
    EXPECT_EQ(run({"copy", sample, scratch("copy")}).status, 0);
    EXPECT_EQ(contents(scratch("copy")), contents(sample));
    EXPECT_EQ(run({"copy", "-", "-"}, sample).out, contents(sample));
  }
  EXPECT_EQ(run({"copy", scratch("copy"), scratch("copy")}).status, 2);
  // A valid file of unknown sizes, then one that is not valid, onto a file that is there.
  EXPECT_EQ(run({"copy", SAMPLES "/scene-streamed.for4", scratch("copy")}).status, 0);
  const std::string exact = contents(scratch("copy"));
  EXPECT_EQ(exact,
            chunk("FOR4", "SCEN" + chunk("NAME", raw("scene\0\0\0")) + chunk("FOR4", "SHAP" + chunk("NAME", "cube"))));
  EXPECT_EQ(run({"copy", write("bad", exact.substr(0, 50)), scratch("copy")}).status, 1);
  EXPECT_EQ(contents(scratch("copy")), exact);
  EXPECT_EQ(run({"copy", SAMPLES "/scene.for4", scratch("no/where")}).status, 2);
  fs::remove(scratch(".out"));
  fs::remove(scratch(".err"));
  EXPECT_EQ(std::distance(fs::directory_iterator(scratch()), fs::directory_iterator()), 2); // "copy" and "bad"
}

TEST_F(FlinspectTest, Usage)
{
  const std::string sample = SAMPLES "/stripes.ilbm";
  const struct
  {
    std::vector<std::string> arguments;
    int status;
    std::string starts; // standard output, or standard error where the status is 2
  } cases[] = {
    {{"--version"}, 0, "flinspect "},
    {{"--help"}, 0, "Shows"},
    {{"copy", "--help"}, 0, "Write"},
    {{"check", sample}, 0, sample + ": valid, 1 group, 3 chunks\n"},
    {{}, 2, "flinspect: "},
    {{"--wrong", sample}, 2, "flinspect: "},
    {{"--color=sometimes", sample}, 2, "flinspect: "},
    {{"dump", sample}, 2, "flinspect: "},
    {{"extract", sample}, 2, "flinspect: "},
    {{"copy", sample, scratch("x"), scratch("y")}, 2, "flinspect: "},
    {{"check", scratch()}, 2, "flinspect: " + scratch() + ": not a file\n"},
    {{"check", "|echo"}, 2, "flinspect: |echo: "},
    {{"check", "--open-forms", "mem:4096,8"}, 2, "flinspect: mem:4096,8: bad file name\n"},
  };
  for (const auto& [arguments, status, starts] : cases)
  {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, status) << testing::PrintToString(arguments);
    EXPECT_EQ((status == 2 ? result.err : result.out).substr(0, starts.size()), starts);
  }
}
