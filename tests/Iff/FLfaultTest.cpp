#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <set>
#include <tuple>
#include <vector>

#ifndef _WIN32
#  include <cerrno>
#  include <dlfcn.h>
#  include <fcntl.h>
#  include <sys/resource.h>
#  include <sys/syscall.h>
#  include <unistd.h>

namespace {

#  if !FAILING_MEMORY
const auto failAllocations = [](int, int) {};
const auto failedAllocations = [] { return 0; };
#  endif

// System calls ('r'ead, 'w'rite, 's'eek, 'e'nd of a process), or allocations ('a'), that are to fail: `times` of them
// behind the first `after`, with an error, or by moving only one byte.
struct Fault
{
  char call = 0;
  int error = 0, times = 0, after = 0, struck = 0;
} gFault;

bool strikes(char call)
{
  if (gFault.call != call || gFault.after-- > 0 || gFault.struck == gFault.times)
    return false;
  gFault.after = 0;
  ++gFault.struck;
  errno = gFault.error;
  return true;
}

} // namespace

// The library finds these before the system's.
extern "C" ssize_t read(int descriptor, void* buffer, size_t count)
{
  const bool struck = strikes('r');
  return struck && gFault.error ? -1 : syscall(SYS_read, descriptor, buffer, struck ? 1 : count);
}

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count)
{
  const bool struck = strikes('w');
  return struck && gFault.error ? -1 : syscall(SYS_write, descriptor, bytes, struck ? 1 : count);
}

extern "C" off_t lseek(int descriptor, off_t offset, int whence) noexcept
{
  static const auto next = reinterpret_cast<off_t (*)(int, off_t, int)>(dlsym(RTLD_NEXT, "lseek64"));
  return strikes('s') ? -1 : next(descriptor, offset, whence);
}

extern "C" pid_t waitpid(pid_t process, int* status, int options)
{
  return strikes('e') ? -1 : pid_t(syscall(SYS_wait4, process, status, options, nullptr));
}

namespace {

// Reads a whole file, what is long only in part, without an allocation of its own. False unless all went well.
bool readWhole(const char* name, TuInt64& sum)
{
  _FLfile* file = FLopen(name, "r");
  int status = file ? 0 : flerrno;
  const auto add = [&sum](TuInt32 word) { sum = (sum ^ word) * 0x100000001B3; };
  for (int depth = 0; status == 0;)
  {
    TuInt32 name4 = 0, type = 0;
    Tint32 size = 0;
    status = FLbgnget(file, &name4, &size);
    add(name4);
    add(TuInt32(size));
    if (status == kFLgroupHeader && ++depth)
      status = FLbgnreadgroup(file, &type, nullptr);
    else if (status == kFLok)
    {
      const long count = size < 0 || size > 5000 ? 3 : size;
      const unsigned char* data = static_cast<const unsigned char*>(FLbgnread(file, count));
      for (long i = 0; data && i < count; ++i)
        add(data[i]);
      status = data ? FLendget(file) : flerrno;
    }
    else if (status == kFLend && depth-- > 0)
      status = FLendrgroup(file);
    add(type);
  }
  return file && FLclose(file) == 0 && status == kFLend;
}

// Writes a file with everything that is patched, buffered, longer than a window, and left to FLclose.
bool writeWhole(const char* name, const char* mode)
{
  static const char kData[90000] = {1, 2, 3};
  _FLfile* file = FLopen(name, mode);
  if (!file)
    return false;
  FLbgnwritegroup(file, id("FOR4"), id("TEST"));
  FLbgnputchunk(file, id("LONG"), -1);
  for (int i = 0; i < 100; ++i)
    FLput(file, kData, 1000);
  FLendputchunk(file);
  FLbgnwritegroup(file, id("LIST"), id("TEST"));
  FLbgnputchunk(file, id("MORE"), sizeof kData);
  FLput(file, kData, sizeof kData);
  FLendputchunk(file);
  if (void* place = FLbgnbufchunk(file, id("BUFF"), 9))
  {
    std::memset(place, 'b', 9);
    FLendbufchunk(file, 0);
  }
  FLbgnputchunk(file, id("LAST"), -1);
  FLputs(file, "abc");
  return FLclose(file) == 0;
}

std::ptrdiff_t openDescriptors()
{
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

std::string nested()
{
  std::string forms;
  for (int i = 0; i < 20; ++i)
    forms += form(chunk("NAME", "abc") + chunk("BODY", std::string(std::size_t(i) * 977, 'b')));
  return form(form(forms, "LIST") + chunk("LAST", "z")) + begun(kStreamed, "FOR4") + header("STRM", kStreamed) +
         "abcd" + kCvoe + kGend;
}

// Every single call of each kind fails in turn, once or from then on.
TEST(FLfault, isReportedWhateverFails)
{
  Scratch scratch;
  const std::string source = scratch.write("source", "abc" + nested() + "end");
  const std::string plain = scratch.write("plain", nested());
  const std::string sink = scratch.write("sink", "");
  const int from = open(source.c_str(), O_RDONLY | O_CLOEXEC);
  const int to = open(sink.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  const std::pair<std::string, const char*> scenarios[] = {
    // with the mode, null to read
    {plain, nullptr},
    {"fd:" + std::to_string(from), nullptr},
    {"mmap:" + plain, nullptr},
    {"pipe:cat " + plain, nullptr},
    {sink, "w"},
    {"fd:" + std::to_string(to), "w"},
    {"fd:" + std::to_string(to), "ws"},
    {"pipe:cat >" + sink, "w"},
    {"pipe:cat >" + sink, "ws"},
  };
  std::vector<Fault> faults = {{'r', 0, 1},     {'r', 0, 100},   {'w', 0, 1},    {'w', 0, 100},
                               {'r', EINTR, 3}, {'w', EINTR, 3}, {'e', EINTR, 3}};
  for (const char call : {'r', 'w', 's', 'a'})
    faults.insert(faults.end(), {{call, EIO, 1}, {call, EIO, 100}});
  std::set<char> met;
  for (const auto& [name, mode] : scenarios)
  {
    TuInt64 sum = 0;
    const auto run = [&, path = name.c_str(), way = mode](const Fault& fault) {
      lseek(from, 3, SEEK_SET);
      EXPECT_EQ(ftruncate(to, 0), 0);
      sum = 0;
      flerrno = 0;
      gFault = fault;
      if (fault.call == 'a')
        failAllocations(fault.after, fault.times);
      const bool good = way ? writeWhole(path, way) : readWhole(path, sum);
      gFault.call = 0;
      if (fault.call == 'a')
        gFault.struck = failedAllocations();
      failAllocations(0, 0);
      sum += TuInt64(lseek(from, 0, SEEK_CUR)); // whoever lent it goes on there
      return good;
    };
    ASSERT_TRUE(run({})) << name;
    const TuInt64 wholeSum = sum;
    const std::string whole = scratch.read("sink");
    for (Fault fault : faults)
    {
      for (int struck = 1; struck; ++fault.after)
      {
        SCOPED_TRACE(name + " " + fault.call + ", errno " + std::to_string(fault.error) + " x" +
                     std::to_string(fault.times) + " after " + std::to_string(fault.after));
        const std::ptrdiff_t before = openDescriptors();
        const bool good = run(fault);
        struck = gFault.struck;
        if (struck)
          met.insert(fault.call);
        const bool told = flerrno != 0;
        EXPECT_TRUE(fault.call == 'a' || told == !good); // FLclose knows of every lost write
        EXPECT_TRUE(!told || (struck && fault.error != 0 && fault.error != EINTR));
        EXPECT_TRUE(told || (sum == wholeSum && scratch.read("sink") == whole));
        EXPECT_EQ(openDescriptors(), before);
      }
    }
  }
  EXPECT_EQ(met.size(), 4U + FAILING_MEMORY); // else the library does not call the functions above
  close(from);
  close(to);
}

// What a command or a device does in mid-stream, and the code that FLclose then gives.
TEST(FLfault, noticesWhoDiesAtTheOtherEnd)
{
  const Scratch scratch;
  const std::string input = scratch.write("input", nested());
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  const std::string nobody = "fd:" + std::to_string(ends[1]);
  const std::tuple<std::string, const char*, int> cases[] = {
    {"pipe:head -c 70000 " + input + "; kill -9 $$", nullptr, kFLbrokenPipe},
    {"pipe:cat " + input + "; kill -9 $$", nullptr, kFLbrokenPipe},
    {nobody, "w", kFLbrokenPipe},
    {nobody, "ws", kFLbrokenPipe},
    {"pipe:cat >/dev/null; kill -9 $$", "w", kFLbrokenPipe},
    {"/dev/full", "w", kFLioError}};
  for (const auto& [name, mode, code] : cases)
  {
    TuInt64 sum = 0;
    flerrno = 0;
    EXPECT_FALSE(mode ? writeWhole(name.c_str(), mode) : readWhole(name.c_str(), sum)) << name;
    EXPECT_EQ(flerrno, code) << name;
  }
  close(ends[1]);
}

TEST(FLfault, noticesAMappedFileThatShrinks)
{
  const Scratch scratch;
  const std::string bytes = form(chunk("LONG", std::string(20000, 'x')) + chunk("LAST", "y"));
  for (const long length : {0L, 100L, 4096L, 9000L, long(bytes.size()) - 5})
  {
    const std::string path = scratch.write("file", bytes);
    _FLfile* file = FLopen(("mmap:" + path).c_str(), "r");
    ASSERT_EQ(FLbgnreadgroup(file, nullptr, nullptr), 0);
    EXPECT_EQ(FLbgnget(file, nullptr, nullptr), 0);
    ASSERT_EQ(truncate(path.c_str(), length), 0);
    std::string data(20000, 0);
    const bool whole = FLget(file, data.data(), 20000) == 20000;
    EXPECT_EQ(whole, length > 20000) << length;
    EXPECT_EQ(FLendget(file), 0);
    EXPECT_EQ(FLbgnget(file, nullptr, nullptr), whole ? 0 : kFLioError) << length;
    EXPECT_EQ(FLclose(file), -1) << length;
    EXPECT_EQ(flerrno, kFLioError) << length;
  }
}

TEST(FLfault, reportsThatDescriptorsAreExhausted)
{
  const Scratch scratch;
  const std::string path = scratch.write("file", nested());
  FLsettransfer("somewhere", "/bin/true ");
  rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const std::ptrdiff_t open = openDescriptors();
  const int lowest = dup(0);
  close(lowest);
  for (const std::string& name : {path, "pipe:cat " + path, "somewhere:" + path, path + ".Z", std::string("/dev/null")})
  {
    for (int i = 0; i < 24; ++i)
    {
      const char* mode = i % 3 == 0 ? "r" : i % 3 == 1 ? "w" : "ws";
      SCOPED_TRACE(name + " " + mode + ", descriptors left: " + std::to_string(i / 3));
      const rlimit few = {rlim_t(lowest + i / 3), before.rlim_max};
      setrlimit(RLIMIT_NOFILE, &few);
      flerrno = 0;
      _FLfile* file = FLopen(name.c_str(), mode);
      EXPECT_TRUE(file ? i >= 3 : flerrno == kFLioError);
      if (file)
        FLclose(file);
      setrlimit(RLIMIT_NOFILE, &before);
      EXPECT_EQ(openDescriptors(), open);
    }
  }
  FLsettransfer("somewhere", nullptr);
}

TEST(FLfault, walksBeyondFourGigabytes)
{
  const Scratch scratch;
  const std::string path = scratch.write("file", "");
  constexpr Tint64 kThird = 2 * (8 + 0x7FFFFFE8LL);
  std::filesystem::resize_file(path, kThird + 8 + 0x7FFFFFE8LL);
  const std::string start = begun(0x7FFFFFE8) + chunk("NAME", std::string("abc") + '\0');
  const int descriptor = open(path.c_str(), O_RDWR);
  for (const Tint64 at : {0LL, kThird / 2, kThird})
    ASSERT_EQ(pwrite(descriptor, start.data(), start.size(), at), ssize_t(start.size()));
  std::vector<std::string> names = {path, "fd:" + std::to_string(descriptor)};
  if (sizeof(void*) > 4)
    names.push_back("mmap:" + path);
  for (const std::string& name : names)
  {
    _FLfile* file = FLopen(name.c_str(), "r");
    EXPECT_EQ(FLskipgroup(file), 0);
    EXPECT_EQ(FLbgnget(file, nullptr, nullptr), kFLgroupHeader);
    EXPECT_EQ(FLendget(file), 0);
    EXPECT_EQ(FLbgnreadgroup(file, nullptr, nullptr), 0);
    EXPECT_STREQ(static_cast<char*>(FLgetchunk(file, nullptr, nullptr)), "abc") << name;
    EXPECT_EQ(FLtell(file), kThird + 24);
    EXPECT_EQ(FLendrgroup(file), 0);
    EXPECT_EQ(FLbgnget(file, nullptr, nullptr), kFLend);
    EXPECT_EQ(FLclose(file), 0);
  }
  close(descriptor);
}
} // namespace
#endif

TEST(FLfault, nestsAMillionGroups)
{
  constexpr int kDepth = 1000000;
  std::string block(12 * kDepth, '\0'), unknown;
  _FLfile* file = FLopen(memoryName(block.data(), block.size()).c_str(), "w");
  int errors = 0;
  for (int i = 0; i < kDepth; ++i, unknown += begun(kUnknown, "FOR4"))
    errors += FLbgnwritegroup(file, id("FOR4"), id("TEST")) != 0;
  EXPECT_EQ(FLclose(file), 0);
  for (const std::string* bytes : {&block, &unknown})
  {
    file = FLopen(memoryName(bytes->data(), bytes->size()).c_str(), "r");
    EXPECT_EQ(FLskipgroup(file), 0);
    EXPECT_EQ(FLtell(file), Tint64(bytes->size()));
    EXPECT_EQ(FLclose(file), 0);
  }
  EXPECT_EQ(errors, 0);
}
