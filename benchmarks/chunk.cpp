// What the chunk-file engine costs beside the smallest code that does the same work by hand.
//
// Three sets of chunks: "small", a million of 20 bytes in nested groups; "large", a hundred of 10 MiB; "skip", a
// million of 4 KiB of which only the headers are looked at. The engine's peers are walks that check no more than they
// must, and plain transfers of the same bytes. A walk proves what it saw by a tally, a writer by what it left behind; a
// wrong result ends the run.
//
// The files, 5 GB together, are made in TMPDIR or /tmp and should fit into the machine's memory; a TMPDIR that is in
// memory itself keeps the disk out of the figures. One set or direction alone: --benchmark_filter=small.read

#include "Foundation/Iff/FL.h"
#include "benchmarks/Ratios.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr TuInt32 kForm = 0x464F524D; // "FORM"
constexpr TuInt32 kType = 0x424E4348; // "BNCH"
constexpr TuInt32 kLeaf = 0x44303030; // "D000" and up
constexpr std::size_t kMiB = std::size_t(1) << 20;
constexpr std::size_t kWindow = 65536;     // what peers buffer, as the engine does
constexpr std::size_t kRoom = 1100 * kMiB; // of the buffer for whole files

const std::filesystem::path gFolder = std::filesystem::temp_directory_path() / ("chunk." + std::to_string(getpid()));

[[noreturn]] void fail(const char* what)
{
  std::fprintf(stderr, "chunk: %s went wrong (flerrno %d, errno %d)\n", what, flerrno, errno);
  std::filesystem::remove_all(gFolder);
  std::_Exit(1);
}

// Some gigabytes are not left behind. Only what a signal handler may call.
void onInterrupt(int signal)
{
  const int folder = open(gFolder.c_str(), O_RDONLY | O_DIRECTORY);
  for (const char* file : {"small", "large", "skip", "written"})
    unlinkat(folder, file, 0);
  rmdir(gFolder.c_str());
  _exit(128 + signal);
}

inline void require(bool good, const char* what)
{
  if (!good) [[unlikely]]
    fail(what);
}

unsigned char* map(int fd, std::size_t size)
{
  void* base = fd < 0 ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, fd, 0)
                      : mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
  require(base != MAP_FAILED, "mmap");
  return static_cast<unsigned char*>(base);
}

unsigned char* const gBuffer = map(-1, kRoom);

// Where the data of a leaf come from, up to 10 MiB of them.
const unsigned char* pool(unsigned leaf)
{
  static const std::vector<std::uint64_t> words = [] {
    std::vector<std::uint64_t> made(10 * kMiB / 8 + 1024);
    for (std::uint64_t state = 1; std::uint64_t & word : made)
      word = state = state * 6364136223846793005U + 1442695040888963407U;
    return made;
  }();
  return reinterpret_cast<const unsigned char*>(words.data() + leaf % 1024);
}

struct Tally
{
  std::uint64_t leaves = 0;
  std::uint64_t sum = 0;

  // Of the data, if any, the first word, the last, and one in each window's length are summed.
  void add(TuInt32 id, std::size_t size, const unsigned char* data)
  {
    const auto load = [data](std::size_t at) {
      std::uint64_t word;
      std::memcpy(&word, data + at, sizeof word);
      return word;
    };
    ++leaves;
    sum += id + size;
    for (std::size_t at = 0; data && at < size; at += kWindow)
      sum += load(at);
    sum += data ? load(size - 8) : 0;
  }
  bool operator==(const Tally&) const = default;
};

struct Set
{
  const char* name;
  int iterations;            // in a row
  std::vector<unsigned> fan; // how many roots there are, how many members each has, and so on
  std::size_t leafSize;
  bool skips;

  std::string path = {};
  std::size_t size = 0;
  const unsigned char* bytes = nullptr;
  Tally tally = {};
};

// The size of a group whose members are those of `level`.
std::size_t groupSize(const Set& set, std::size_t level)
{
  return 4 + set.fan[level] * (8 + (level + 1 < set.fan.size() ? groupSize(set, level + 1) : set.leafSize));
}

// Walks. Those by hand have an input whose take() gives the address of the next bytes, null at the end.

template <auto kRead>
struct StreamInput
{
  std::FILE* stream;
  bool seeks;

  const unsigned char* take(std::size_t count) { return kRead(gBuffer, 1, count, stream) == count ? gBuffer : nullptr; }
  bool skip(std::size_t count) { return seeks ? fseeko(stream, off_t(count), SEEK_CUR) == 0 : take(count) != nullptr; }
};

struct PointerInput
{
  const unsigned char* at;
  const unsigned char* end;

  const unsigned char* take(std::size_t count)
  {
    return std::size_t(end - at) < count ? nullptr : (at += count) - count;
  }
  bool skip(std::size_t count) { return take(count) != nullptr; }
};

template <class Input>
Tally walk(Input input, bool skips)
{
  const auto word = [](const unsigned char* at) {
    return TuInt32(at[0]) << 24 | TuInt32(at[1]) << 16 | TuInt32(at[2]) << 8 | TuInt32(at[3]);
  };
  Tally tally;
  std::uint64_t position = 0;
  std::uint64_t ends[8] = {UINT64_MAX};
  unsigned depth = 0;
  while (const unsigned char* header = input.take(8))
  {
    const TuInt32 id = word(header);
    const TuInt32 size = word(header + 4);
    const std::uint64_t padded = std::uint64_t(size) + (size & 1);
    require(ends[depth] - position >= 8 + padded, "a size");
    position += 8;
    if (id == kForm)
    {
      require(size >= 4 && depth < 7 && input.take(4), "a group");
      ends[++depth] = position + padded;
      position += 4;
    }
    else
    {
      const unsigned char* data = skips ? nullptr : input.take(size);
      require(data || skips, "data");
      tally.add(id, size, data);
      const std::size_t rest = skips ? padded : padded - size;
      require(rest == 0 || input.skip(rest), "a step");
      position += padded;
    }
    while (position == ends[depth])
      --depth;
  }
  require(depth == 0, "the end");
  return tally;
}

Tally walkEngine(const std::string& name, bool skips, bool whole)
{
  _FLfile* file = FLopen(name.c_str(), "r");
  require(file != nullptr, "FLopen");
  Tally tally;
  TuInt32 id = 0;
  Tint32 size = 0;
  for (unsigned depth = 0;;)
  {
    const void* data = nullptr;
    int status = 0;
    if (whole && depth != 0)
      status = (data = FLgetchunk(file, &id, &size)) ? 0 : FLerror();
    else
      status = FLbgnget(file, &id, &size);
    if (status == 0)
    {
      if (!data && !skips)
      {
        require(std::size_t(size) <= kRoom && FLget(file, gBuffer, size) == size, "FLget");
        data = gBuffer;
      }
      require(whole || FLendget(file) == 0, "FLendget");
      tally.add(id, std::size_t(size), static_cast<const unsigned char*>(data));
      continue;
    }
    require(status == kFLgroupHeader || status == kFLend, "a header");
    if (status == kFLend && depth == 0)
      break;
    require((status == kFLend ? FLendrgroup(file) : FLbgnreadgroup(file, nullptr, nullptr)) == 0, "a group");
    depth += status == kFLend ? -1U : 1U;
  }
  require(FLclose(file) == 0, "FLclose");
  return tally;
}

// Writers. Those by hand hand over each field with one call.

template <class Put>
struct FieldOutput
{
  Put put;

  void number(TuInt32 value)
  {
    const auto byte = [value](int shift) { return static_cast<unsigned char>(value >> shift); };
    const unsigned char bytes[4] = {byte(24), byte(16), byte(8), byte(0)};
    put(bytes, sizeof bytes);
  }
  void beginGroup(std::size_t size)
  {
    number(kForm);
    number(TuInt32(size));
    number(kType);
  }
  void leaf(TuInt32 id, const unsigned char* data, std::size_t size)
  {
    number(id);
    number(TuInt32(size));
    put(data, size);
  }
  void endGroup() {}
};

template <auto kWrite>
struct StreamPut
{
  std::FILE* stream;

  void operator()(const unsigned char* from, std::size_t n) { require(kWrite(from, 1, n, stream) == n, "fwrite"); }
};

void writeAll(int fd, const unsigned char* bytes, std::size_t count)
{
  for (ssize_t put = 0; count != 0; bytes += put, count -= std::size_t(put))
    require((put = write(fd, bytes, count)) > 0, "write");
}

struct GatherPut
{
  int fd;
  std::size_t held = 0;
  std::vector<unsigned char> window = std::vector<unsigned char>(kWindow);

  void operator()(const unsigned char* bytes, std::size_t count)
  {
    if (count > kWindow - held)
      writeAll(fd, window.data(), std::exchange(held, 0));
    if (count > kWindow)
      return writeAll(fd, bytes, count);
    std::memcpy(window.data() + held, bytes, count);
    held += count;
  }
};

struct EngineOutput
{
  _FLfile* file;
  bool patches; // sizes of groups are filled in afterwards

  void beginGroup(std::size_t size)
  {
    const int error =
      patches ? FLbgnwritegroup(file, kForm, kType) : FLbgnwritegroupsize(file, kForm, kType, Tint32(size));
    require(error == 0, "a group");
  }
  void leaf(TuInt32 id, const unsigned char* data, std::size_t size)
  {
    require(FLbgnputchunk(file, id, Tint32(size)) == 0, "FLbgnputchunk");
    require(FLput(file, data, long(size)) == long(size), "FLput");
    require(FLendputchunk(file) == 0, "FLendputchunk");
  }
  void endGroup() { require(FLendwritegroup(file) == 0, "FLendwritegroup"); }
};

template <class Output>
unsigned writeMembers(const Set& set, Output& output, std::size_t level = 0, unsigned leaf = 0)
{
  for (unsigned i = 0; i < set.fan[level]; ++i)
  {
    if (level + 1 == set.fan.size())
      output.leaf(kLeaf + leaf % 10, pool(leaf), set.leafSize), ++leaf;
    else
    {
      output.beginGroup(groupSize(set, level + 1));
      leaf = writeMembers(set, output, level + 1, leaf);
      output.endGroup();
    }
  }
  return leaf;
}

// Pieces of work to be timed. They get the name and the descriptor of one file.

template <auto kRead>
Tally readStream(const Set& set, const std::string& name, int fd)
{
  std::FILE* stream = fdopen(dup(fd), "rb");
  std::setvbuf(stream, nullptr, _IOFBF, kWindow);
  const Tally tally = walk(StreamInput<kRead>{stream, name[0] == '/'}, set.skips);
  std::fclose(stream);
  return tally;
}

Tally readMapping(const Set& set, const std::string&, int fd)
{
  unsigned char* base = map(fd, set.size);
  const Tally tally = walk(PointerInput{base, base + set.size}, set.skips);
  munmap(base, set.size);
  return tally;
}

Tally readMemory(const Set& set, const std::string&, int)
{
  return walk(PointerInput{set.bytes, set.bytes + set.size}, set.skips);
}

// All bytes and nothing else, a file's in one piece where the buffer has the room. The ends of pieces are compared.
template <bool kCopies>
Tally readBytes(const Set& set, const std::string& name, int fd)
{
  for (std::size_t total = 0, got = 0; total < set.size; total += got)
  {
    unsigned char* to = gBuffer + (set.size <= kRoom ? total : 0);
    const std::size_t most = std::min(name[0] == '/' ? kRoom : kWindow, set.size - total);
    if (kCopies)
      std::memcpy(to, set.bytes + total, got = most);
    else if (const ssize_t count = read(fd, to, most); count > 0)
      got = std::size_t(count);
    else
      fail("read");
    require(to[0] == set.bytes[total] && to[got - 1] == set.bytes[total + got - 1], "bytes");
  }
  return set.tally;
}

enum Form
{
  kAsFile,
  kMapped,
  kInMemory
};

template <Form kHow, bool kWhole>
Tally readEngine(const Set& set, const std::string& name, int)
{
  const std::string address = std::to_string(reinterpret_cast<std::uintptr_t>(set.bytes));
  const std::string block = "mem:" + address + "," + std::to_string(set.size);
  return walkEngine(kHow == kAsFile ? name : kHow == kMapped ? "mmap:" + name : block, set.skips, kWhole);
}

template <bool kPatches>
Tally writeEngine(const Set& set, const std::string& name, int)
{
  EngineOutput output{FLopen(name.c_str(), "w"), kPatches};
  writeMembers(set, output);
  require(FLclose(output.file) == 0, "FLclose");
  return set.tally;
}

template <auto kWrite>
Tally writeStream(const Set& set, const std::string&, int fd)
{
  FieldOutput<StreamPut<kWrite>> output{{fdopen(dup(fd), "wb")}};
  writeMembers(set, output);
  require(std::fclose(output.put.stream) == 0, "fclose");
  return set.tally;
}

Tally writeGathered(const Set& set, const std::string&, int fd)
{
  FieldOutput<GatherPut> output{{fd}};
  writeMembers(set, output);
  writeAll(fd, output.put.window.data(), output.put.held);
  return set.tally;
}

Tally writeBytes(const Set& set, const std::string&, int fd)
{
  writeAll(fd, set.bytes, set.size);
  return set.tally;
}

// How they are timed: on what kind of file, and what is checked afterwards.

using Work = Tally (*)(const Set&, const std::string& name, int fd);

double onFile(const Set& set, Work work)
{
  const int fd = open(set.path.c_str(), O_RDONLY);
  const double time = seconds([&] { require(work(set, set.path, fd) == set.tally, "what was read"); });
  close(fd);
  return time;
}

double fromPipe(const Set& set, Work work)
{
  int ends[2];
  require(pipe(ends) == 0, "pipe");
  const double time = seconds([&] {
    std::thread feeder([&] {
      writeAll(ends[1], set.bytes, set.size);
      close(ends[1]);
    });
    require(work(set, "fd:" + std::to_string(ends[0]), ends[0]) == set.tally, "what was read");
    feeder.join();
  });
  close(ends[0]);
  return time;
}

double toFile(const Set& set, Work work)
{
  const std::string path = gFolder / "written";
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
  const double time = seconds([&] { work(set, path, fd); });
  require(lseek(fd, 0, SEEK_END) == off_t(set.size), "the size of what was written");
  unsigned char* written = map(fd, set.size);
  require(std::memcmp(written, set.bytes, set.size) == 0, "what was written");
  munmap(written, set.size);
  close(fd);
  unlink(path.c_str());
  return time;
}

double toPipe(const Set& set, Work work)
{
  int ends[2];
  require(pipe(ends) == 0, "pipe");
  const double time = seconds([&] {
    std::thread drain([&] {
      std::vector<unsigned char> taken(kWindow);
      std::size_t total = 0;
      for (ssize_t got = 0; (got = read(ends[0], taken.data(), kWindow)) > 0; total += std::size_t(got))
      {
        // All of it would take longer than the transfer; bytes gone astray show at the beginnings too.
        const std::size_t some = std::min<std::size_t>(std::size_t(got), 64);
        require(some <= set.size - total && std::memcmp(taken.data(), set.bytes + total, some) == 0, "what was piped");
      }
      require(total == set.size, "the size of what was piped");
    });
    work(set, "fd:" + std::to_string(ends[1]), ends[1]);
    close(ends[1]);
    drain.join();
  });
  close(ends[0]);
  return time;
}

void makeFile(Set& set)
{
  set.path = gFolder / set.name;
  const int fd = open(set.path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
  FieldOutput<GatherPut> output{{fd}};
  const unsigned leaves = writeMembers(set, output);
  writeAll(fd, output.put.window.data(), output.put.held);
  fsync(fd); // else the disk is at work while the clock runs
  set.size = set.fan[0] * (8 + groupSize(set, 1));
  require(lseek(fd, 0, SEEK_END) == off_t(set.size), "making a file");
  set.bytes = map(fd, set.size);
  close(fd);
  for (unsigned leaf = 0; leaf < leaves; ++leaf)
    set.tally.add(kLeaf + leaf % 10, set.leafSize, set.skips ? nullptr : pool(leaf));
}

struct Kind
{
  const char* table;
  const char* name;
  bool ours;
  double (*way)(const Set&, Work);
  Work work;
  bool skips = true; // makes sense where chunks are skipped
};

const Kind kKinds[] = {
  {"read", "file", true, onFile, readEngine<kAsFile, false>},
  {"read", "file, FLgetchunk", true, onFile, readEngine<kAsFile, true>, false},
  {"read", "mmap:", true, onFile, readEngine<kMapped, false>},
  {"read", "mmap:, FLgetchunk", true, onFile, readEngine<kMapped, true>, false},
  {"read", "mem:", true, onFile, readEngine<kInMemory, false>},
  {"read", "mem:, FLgetchunk", true, onFile, readEngine<kInMemory, true>, false},
  {"read", "fread", false, onFile, readStream<std::fread>},
  {"read", "fread_unlocked", false, onFile, readStream<fread_unlocked>},
  {"read", "mapped walk", false, onFile, readMapping},
  {"read", "memory walk", false, onFile, readMemory},
  {"read", "read(2)", false, onFile, readBytes<false>},
  {"read", "memcpy", false, onFile, readBytes<true>},
  {"read pipe", "pipe", true, fromPipe, readEngine<kAsFile, false>},
  {"read pipe", "pipe, FLgetchunk", true, fromPipe, readEngine<kAsFile, true>, false},
  {"read pipe", "fread", false, fromPipe, readStream<std::fread>},
  {"read pipe", "fread_unlocked", false, fromPipe, readStream<fread_unlocked>},
  {"read pipe", "read(2)", false, fromPipe, readBytes<false>},
  {"write", "file", true, toFile, writeEngine<false>, false},
  {"write", "file, patched", true, toFile, writeEngine<true>, false},
  {"write", "fwrite", false, toFile, writeStream<std::fwrite>, false},
  {"write", "fwrite_unlocked", false, toFile, writeStream<fwrite_unlocked>, false},
  {"write", "gathered", false, toFile, writeGathered, false},
  {"write", "write(2)", false, toFile, writeBytes, false},
  {"write pipe", "pipe", true, toPipe, writeEngine<false>, false},
  {"write pipe", "fwrite", false, toPipe, writeStream<std::fwrite>, false},
  {"write pipe", "fwrite_unlocked", false, toPipe, writeStream<fwrite_unlocked>, false},
  {"write pipe", "gathered", false, toPipe, writeGathered, false},
  {"write pipe", "write(2)", false, toPipe, writeBytes, false},
};

const std::vector<Aim> kAims = {
  {"small read", "file", "fread_unlocked", 1.2}, {"large read", "file", "read(2)", 1.1},
  {"small read", "mem:", "memory walk", 2},      {"small read", "mem:, FLgetchunk", "memory walk", 2},
  {"small read", "mmap:", "mapped walk", 2},     {"small read", "mmap:, FLgetchunk", "mapped walk", 2},
  {"small write", "file", "gathered", 2},        {"small write", "file", "fwrite", 1},
};

} // namespace

int main(int argc, char** argv)
{
  Set sets[] = {{"small", 3, {1, 10000, 10, 10}, 20, false},
                {"large", 1, {1, 100}, 10 * kMiB, false},
                {"skip", 1, {4, 250000}, 4096, true}}; // several roots: one's size could not hold them all
  std::vector<Case> cases;
  for (Set& set : sets)
  {
    for (const Kind& kind : kKinds)
    {
      const auto run = [&set, &kind] {
        if (!set.bytes)
          makeFile(set);
        return kind.way(set, kind.work);
      };
      if (kind.skips || !set.skips)
        cases.push_back({std::string(set.name) + " " + kind.table, kind.name, kind.ours, set.iterations, run});
    }
  }
  std::filesystem::create_directory(gFolder);
  for (const int signal : {SIGHUP, SIGINT, SIGTERM})
    std::signal(signal, onInterrupt);
  const int status = runRatios(argc, argv, cases, kAims);
  std::filesystem::remove_all(gFolder);
  return status;
}
