// What parsing by callback costs beside the engine's functions called in a loop: a million leaves of 20 bytes in ten
// thousand groups, skipped or read, from memory and from a file; and a million leaves that become values of four kinds,
// each in a handle, or all in a tree. Each walk proves what it saw by a sum; a wrong result ends the run.

#include "Foundation/Data/TdataCompound.h"
#include "Foundation/Data/TdataReader.h"
#include "Foundation/Iff/TiffFile.h"
#include "benchmarks/Ratios.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kGroups = 10000, kLeaves = 100;
constexpr long kSize = 20;

void require(bool good, const char* what)
{
  if (good)
    return;
  std::fprintf(stderr, "parse: %s went wrong (flerrno %d)\n", what, flerrno);
  std::_Exit(1);
}

struct Sum
{
  std::uint64_t sum = 0;

  // The leaf, and when it is read the first 8 bytes of its data.
  template <bool kReads>
  void add(_FLfile* file, TuInt32 id, Tint32 size)
  {
    sum += id ^ TuInt32(size);
    if (!kReads)
      return;
    std::uint64_t words[3] = {};
    require(FLget(file, words, size) == size, "FLget");
    sum += words[0];
  }
};

template <bool kReads>
std::uint64_t walkEngine(const char* name)
{
  _FLfile* file = FLopen(name, "r");
  require(file, "FLopen");
  Sum sum;
  for (int depth = 0;;)
  {
    TuInt32 id = 0;
    Tint32 size = 0;
    int status = FLbgnget(file, &id, &size);
    if (status == kFLok)
    {
      sum.add<kReads>(file, id, size);
      require(FLendget(file) == 0, "FLendget");
      continue;
    }
    if (status == kFLend && depth-- == 0)
      break;
    if (status == kFLend)
      status = FLendrgroup(file);
    else if (status == kFLgroupHeader)
      ++depth, status = FLbgnreadgroup(file, nullptr, nullptr);
    require(status == 0, "a group");
  }
  FLclose(file);
  return sum.sum;
}

template <bool kReads>
std::uint64_t parseReceiver(const char* name)
{
  struct Receiver : TiffParserCallback
  {
    Sum fSum;
    int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
    {
      if (id != TiffTag::kGEND)
        fSum.add<kReads>(file.file(), id.value(), size);
      return 0;
    }
  } receiver;
  receiver.setMethodsToUse(1);
  TiffFile file(name, "r");
  file.setCallbackObject(&receiver);
  require(file.parse() == 0, "parse");
  return receiver.fSum.sum;
}

template <bool kReads>
std::uint64_t parseFunctions(const char* name)
{
  static Sum sum;
  sum = {};
  TiffFile file(name, "r");
  file.setLeafCallback([](TiffFile& from, TiffTag id, Tint32 size) {
    if (id != TiffTag::kGEND)
      sum.add<kReads>(from.file(), id.value(), size);
    return 0;
  });
  require(file.parse() == 0, "parse");
  return sum.sum;
}

std::string memoryName(const std::vector<char>& bytes)
{
  return "mem:" + std::to_string(reinterpret_cast<std::uintptr_t>(bytes.data())) + "," + std::to_string(bytes.size());
}

struct Leaf
{
  TiffTag tag;
  Tint32 size;
};
constexpr Leaf kChunks[] = {{"DAAA", kSize}, {"DABA", kSize}, {"DACA", kSize}, {"DADA", kSize}};
constexpr Leaf kValues[] = {{"DBLE", 8}, {"FLT3", 12}, {"DBL2", 16}, {"VEC#", 24}};

// The file, in a block of its size.
std::vector<char> makeFile(const Leaf (&leaves)[4])
{
  std::vector<char> bytes(12 + std::size_t(kGroups) * (12 + kLeaves * (8 + 24)));
  TiffFile file(memoryName(bytes).c_str(), "w");
  file.beginWriteGroup("FOR4", "BNCH");
  char data[24] = {};
  for (int group = 0; group < kGroups; ++group)
  {
    file.beginWriteGroup("FOR4", "BNCH");
    for (int leaf = 0; leaf < kLeaves; ++leaf)
    {
      std::memcpy(data, &leaf, sizeof leaf);
      const auto& [tag, size] = leaves[leaf % 4];
      require(file.putChunk(tag, size, data) == 0, "putChunk");
    }
    file.endWriteGroup();
  }
  bytes.resize(std::size_t(file.tell()));
  require(file.close() == 0, "writing");
  return bytes;
}

std::uint64_t sumOf(const Tdata& value)
{
  return value.tag().value() + (value.isNumeric() ? std::uint64_t(value.doubleValue() * 1e300) : 0);
}

// Only the engine, reading each leaf into a buffer.
std::uint64_t readEngine(const char* name)
{
  return walkEngine<true>(name);
}

// Each leaf into its letter and a handle, which is dropped.
std::uint64_t readValues(const char* name)
{
  static std::uint64_t sum;
  sum = 0;
  TiffFile file(name, "r");
  file.setLeafCallback([](TiffFile& from, TiffTag id, Tint32 size) {
    if (id == TiffTag::kGEND)
      return 0;
    void* data = from.readChunk(&size);
    Tdata value;
    auto left = static_cast<unsigned long>(size);
    require(data && value.readBinary(id, left, data) == 0, "readBinary");
    sum += sumOf(value);
    return 0;
  });
  require(file.parse() == 0, "parse");
  return sum;
}

std::uint64_t readTree(const char* name)
{
  TdataReader reader;
  TiffFile file(name, "r");
  file.setCallbackObject(&reader);
  require(file.parse() == 0, "parse");
  std::uint64_t sum = 0;
  for (const Tdata& group : *reader.values()[0].letterAs<TdataCompound>())
  {
    for (const Tdata& value : *group.letterAs<TdataCompound>())
      sum += sumOf(value);
  }
  return sum;
}

} // namespace

int main(int argc, char** argv)
{
  const std::vector<char> bytes = makeFile(kChunks), values = makeFile(kValues);
  const std::string inMemory = memoryName(bytes);
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("parse." + std::to_string(getpid()));
  if (std::FILE* out = std::fopen(path.c_str(), "wb"))
  {
    require(std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size() && std::fclose(out) == 0, "the file");
  }
  std::vector<Case> cases;
  const auto add = [&cases](const char* table, const std::string& file, const char* name, bool ours, auto* walk,
                            std::uint64_t expected) {
    cases.push_back({table, name, ours, 3, [=] {
                       std::uint64_t sum = 0;
                       const double time = seconds([&] { sum = walk(file.c_str()); });
                       require(sum == expected, name);
                       return time;
                     }});
  };
  const std::uint64_t skipped = walkEngine<false>(inMemory.c_str()), read = walkEngine<true>(inMemory.c_str());
  for (const auto& [where, name] : {std::pair("memory", inMemory), std::pair("file", path.string())})
  {
    const bool isFile = *where == 'f';
    const char* const skips = isFile ? "skip, file" : "skip, memory";
    const char* const reads = isFile ? "read, file" : "read, memory";
    add(skips, name, "engine walk", false, walkEngine<false>, skipped);
    add(skips, name, "receiver", true, parseReceiver<false>, skipped);
    add(skips, name, "functions", true, parseFunctions<false>, skipped);
    add(reads, name, "engine walk", false, walkEngine<true>, read);
    add(reads, name, "receiver", true, parseReceiver<true>, read);
    add(reads, name, "functions", true, parseFunctions<true>, read);
  }
  const std::string valuesName = memoryName(values);
  add("values, memory", valuesName, "engine walk", false, readEngine, readEngine(valuesName.c_str()));
  const std::uint64_t sum = readValues(valuesName.c_str());
  add("values, memory", valuesName, "handles", true, readValues, sum);
  add("values, memory", valuesName, "tree", true, readTree, sum);
  std::vector<Aim> aims;
  for (const char* table : {"skip, memory", "skip, file", "read, memory", "read, file"})
    aims.push_back({table, "receiver", "engine walk", 1.15});
  const int status = runRatios(argc, argv, cases, aims);
  std::filesystem::remove(path);
  return status;
}
