// flinspect among the programs and the limits of a Linux system.

#ifdef __linux__

#  include "tools/FlinspectRun.h"

#  include <nlohmann/json.hpp>

#  include <fcntl.h>
#  include <sys/resource.h>
#  include <sys/wait.h>
#  include <tuple>
#  include <unistd.h>

namespace {

class FlinspectField : public FlinspectTest
{
protected:
  void make(const std::string& line) const
  {
    const Result result = shell("cd " + quote(path("")) + " && " + line);
    ASSERT_EQ(result.status, 0) << line << '\n' << result.err;
  }

  // Most memory that flinspect held, in kB.
  static long memoryOf(const char* command, const std::string& file)
  {
    const pid_t child = fork();
    if (child == 0)
    {
      dup2(open("/dev/null", O_WRONLY), 1);
      // The sanitizers' tests would count what is freed as well.
      setenv("ASAN_OPTIONS", "quarantine_size_mb=0:thread_local_quarantine_size_kb=0", 1);
      execl(FLINSPECT, "flinspect", command, file.c_str(), nullptr);
      _exit(127);
    }
    int status = -1;
    rusage usage{};
    EXPECT_EQ(wait4(child, &status, 0, &usage), child);
    EXPECT_EQ(status, 0) << command << ' ' << file;
    return usage.ru_maxrss;
  }
};

} // namespace

TEST_F(FlinspectField, FilesOfOtherPrograms)
{
  // Odd numbers of bytes, so that padding matters.
  make("sox -n -r 8000 -c 1 -b 8 a.aiff synth 0.0501 sine 440");
  make("sox -n -r 8000 -c 3 -b 24 b.aifc synth 0.0501 sine 440");
  make("sox a.aiff c.8svx && flac -s -f a.aiff -o d.flac && flac -s -d --force-aiff-format d.flac -o d.aiff");
  make("sox -n -r 8000 -c 1 -b 16 -t aiff - synth 0.05 sine 440 | cat > e.aiff");
  make("ppmmake red 37 5 > l.ppm && ppmmake blue 6 5 > r.ppm && pnmcat -lr l.ppm r.ppm | ppmtoilbm > f.ilbm");
  const std::tuple<std::string, int, const char*> cases[] = {{"a.aiff", 1, "FORM/SSND"}, {"b.aifc", 2, "FORM/SSND"},
                                                             {"c.8svx", 0, "FORM/BODY"}, {"d.aiff", 0, "FORM/SSND"},
                                                             {"e.aiff", 2, "FORM/SSND"}, {"f.ilbm", 0, "FORM/BODY"}};
  for (const auto& [name, oddities, path4] : cases)
  {
    SCOPED_TRACE(name);
    const std::string file = path(name), copy = path("copy-" + name);
    const auto json = nlohmann::json::parse(run({"json", file}).out);
    EXPECT_EQ(json["oddities"], oddities);
    EXPECT_EQ(json["valid"], true);
    EXPECT_EQ(json["entries"][0]["id"], "FORM");
    ASSERT_EQ(run({"copy", file, copy}).status, 0);
    EXPECT_EQ(run({"check", "--strict", copy}).status, 0);
    EXPECT_TRUE(oddities != 0 || read(copy) == read(file));
    // The programs take the copy for what the file was.
    const bool isPicture = name == "f.ilbm";
    const auto samplesOf = [&](const std::string& from) {
      return shell(isPicture ? "ilbmtoppm " + quote(from) : "sox " + quote(from) + " -t raw -").out;
    };
    EXPECT_GT(samplesOf(file).size(), 400U);
    EXPECT_EQ(samplesOf(copy), samplesOf(file));
    EXPECT_TRUE(name.find("ai") == std::string::npos || shell("sndfile-info " + quote(copy)).status == 0);
    ASSERT_EQ(run({"extract", file, path4, "-d", copy + ".d"}).status, 0);
    EXPECT_EQ(run({"dump", file, path4}).out, shell("xxd < $(ls " + quote(copy + ".d") + "/*)").out);
  }
}

TEST_F(FlinspectField, MemoryDoesNotFollowTheSize)
{
  const std::string sparse = path("sparse.iff");
  std::ofstream file(sparse, std::ios::binary);
  for (int i = 0; i < 5; ++i)
  {
    file << begun(2000000012) << header("BODY", 2000000000);
    file.seekp(1999999999, std::ios::cur).put('\0');
  }
  file.close();
  ASSERT_EQ(std::filesystem::file_size(sparse), 10000000100U);
  constexpr int kDepth = 1000000;
  std::string known, streamed, ends;
  for (unsigned left = 12 * kDepth; left > 0; left -= 12)
    known += begun(left - 8, "LIST"), streamed += begun(kStreamed, "LIST"), ends += kGend;
  const std::string nested = write("nested.iff", known), open = write("open.iff", streamed + ends);
  const std::string small = SAMPLES "/stripes.ilbm";
  for (const char* command : {"tree", "check", "json"})
  {
    const long least = memoryOf(command, small);
    EXPECT_LT(memoryOf(command, sparse), least + 2000) << command;
    EXPECT_LT(memoryOf(command, nested), least + 64 * kDepth / 1000) << command;
    EXPECT_LT(memoryOf(command, open), least + 64 * kDepth / 1000) << command;
  }
  EXPECT_EQ(shell(quote(FLINSPECT) + " copy " + quote(nested) + " - | cmp - " + quote(nested)).status, 0);
}

TEST_F(FlinspectField, OutputThatFails)
{
  std::string chunks;
  for (int i = 0; i < 100000; ++i)
    chunks += chunk("BODY", "12");
  const std::string file = write("many.iff", form(chunks));
  const std::string full = "flinspect: standard output: No space left on device\n";
  for (const char* arguments : {"tree $f", "check $f", "json $f", "events $f", "copy $f -", "dump $f FORM/BODY"})
  {
    const std::string line = "f=" + quote(file) + "; " + quote(FLINSPECT) + ' ' + arguments;
    const Result onFull = shell(line + " > /dev/full");
    EXPECT_EQ(onFull.status, 2) << arguments;
    EXPECT_EQ(onFull.err, full) << arguments;
    // A reader that goes away, with the signal ignored as some parents leave it.
    const Result onBroken = shell("trap '' PIPE; { { sleep 0.2; " + line + "; echo $? >&3; } | true; } 3>&1");
    EXPECT_EQ(onBroken.out, "2\n") << arguments;
    EXPECT_NE(onBroken.err.find("flinspect: standard output: "), std::string::npos) << arguments << onBroken.err;
  }
  const Result copied = run({"copy", file, "/dev/full"});
  EXPECT_EQ(copied.status, 2);
  EXPECT_EQ(copied.err, "flinspect: /dev/full: No space left on device\n");
}

TEST_F(FlinspectField, NameFormsOnRequestOnly)
{
  const std::string cat = "cat " SAMPLES "/stripes.ilbm";
  make(cat + " > 'pipe:x' && " + cat + " > p.iff && compress -f p.iff");
  EXPECT_EQ(shell("cd " + quote(path("")) + "; " + quote(FLINSPECT) + " check pipe:x").status, 0);
  EXPECT_EQ(run({"check", "--open-forms", path("p.iff.Z")}).status, 0);
  EXPECT_EQ(run({"check", path("p.iff.Z")}).status, 1);
  // A command that fails is no valid file, however good its output was.
  const Result failed = run({"check", "--open-forms", "|" + cat + "; exit 3"});
  EXPECT_EQ(failed.status, 2);
  EXPECT_NE(failed.err.find("bad pipe command"), std::string::npos) << failed.err;
}

TEST_F(FlinspectField, ColoursForATerminal)
{
  const std::string line = std::string(FLINSPECT) + " " SAMPLES "/stripes.ilbm";
  const std::string onTerminal = "script -qec " + quote(line) + " /dev/null";
  EXPECT_NE(shell("env -u NO_COLOR TERM=vt100 " + onTerminal).out.find("\x1b[1;34mFORM"), std::string::npos);
  EXPECT_EQ(shell("env NO_COLOR=1 TERM=vt100 " + onTerminal).out.find('\x1b'), std::string::npos);
  EXPECT_EQ(shell(line).out.find('\x1b'), std::string::npos);
}

#endif
