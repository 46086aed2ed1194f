#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"
#include "Terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr Tint64 kLargest = 0x7FFFFFFF;

// The size that a chunk gets in the copy, where its header has another. Chunks are numbered as they begin.
struct Correction
{
  Tint64 fNumber;
  Tint64 fSize;
};

// The first pass: finds the sizes that the copy needs. A file whose sizes are right costs nothing per chunk.
class Measure : public Inspection
{
public:
  using Inspection::Inspection;

  bool begin(const Chunk& chunk) override
  {
    ++fCount;
    if (chunk.fIsGroup)
      fGroups.push_back({fCount, 4});
    return false;
  }

  bool end(const Chunk& chunk) override
  {
    Tint64 number = fCount; // a plain chunk is the last that began
    Tint64 size = chunk.fLength;
    if (chunk.fIsGroup)
    {
      number = fGroups.back().fNumber;
      size = fGroups.back().fSize;
      fGroups.pop_back();
    }
    if (size > kLargest)
      departure(Severity::kError, chunk.fOffset,
                "the size of " + idText(chunk.fId) + " would be " + std::to_string(size));
    if (!chunk.fHasSize || size != Tint64(chunk.fSizeField))
      fCorrections.push_back({number, size});
    if (!fGroups.empty())
      fGroups.back().fSize += 8 + size + chunk.padding(size);
    return true;
  }

  std::vector<Correction> takeCorrections()
  {
    std::sort(fCorrections.begin(), fCorrections.end(),
              [](const Correction& a, const Correction& b) { return a.fNumber < b.fNumber; });
    return std::move(fCorrections);
  }

private:
  std::vector<Correction> fGroups; // that are open, with the size so far
  std::vector<Correction> fCorrections;
  Tint64 fCount = 0;
};

// The second pass: writes. Departures were reported by the first.
class Write : public Receiver
{
public:
  Write(std::vector<Correction> corrections, std::string target, _FLfile* file)
    : fCorrections(std::move(corrections))
    , fTarget(std::move(target))
    , fFile(file)
  {
  }

  bool begin(const Chunk& chunk) override
  {
    ++fCount;
    Tint64 size = chunk.fSizeField;
    if (fNext < fCorrections.size() && fCorrections[fNext].fNumber == fCount)
      size = fCorrections[fNext++].fSize;
    require(chunk.fIsGroup ? FLbgnwritegroupsize(fFile, chunk.fId, chunk.fType, static_cast<Tint32>(size))
                           : FLbgnputchunk(fFile, chunk.fId, static_cast<Tint32>(size)));
    return true;
  }

  void data(const unsigned char* bytes, std::size_t count) override
  {
    if (count != 0 && FLput(fFile, bytes, static_cast<long>(count)) != static_cast<long>(count))
      require(flerrno);
  }

  bool end(const Chunk& chunk) override
  {
    require(chunk.fIsGroup ? FLendwritegroup(fFile) : FLendputchunk(fFile));
    return true;
  }

  void departure(Severity, Tint64, const std::string&) override {}

private:
  void require(int status) const
  {
    if (status != 0)
      throw Failure(fTarget, FLstrerror(status));
  }

  const std::vector<Correction> fCorrections;
  const std::string fTarget;
  _FLfile* const fFile;
  std::size_t fNext = 0; // the correction that comes next
  Tint64 fCount = 0;
};

// The file that the copy goes to. A regular file gets its name when it is complete, so that whatever happens the name
// stands for the old file or for the whole new one; other targets are written as they are.
class Target
{
public:
  explicit Target(const std::string& name)
    : fName(name == "-" ? "standard output" : name)
  {
    std::error_code none;
    const fs::file_status status = name == "-" ? fs::file_status() : fs::status(name, none);
    if (name == "-")
      fFile = FLopen("fd:1", "w");
    else if (fs::exists(status) && !fs::is_regular_file(status))
      fFile = FLopenpath(name.c_str(), "w");
    else
    {
      fReal = fs::exists(status) ? fs::canonical(name, none) : fs::path(name);
      fFile = createBeside(fReal.string(), fPartial);
      removeOnSignal(kPartialFile, fPartial.c_str());
      if (fs::exists(status))
        fs::permissions(fPartial, status.permissions(), none);
    }
    if (!fFile)
      throw Failure(fName, FLstrerror(flerrno));
  }

  ~Target()
  {
    if (fFile)
      FLclose(fFile);
    if (!fPartial.empty())
    {
      std::error_code none;
      fs::remove(fPartial, none);
      removeOnSignal(kPartialFile, nullptr);
    }
  }

  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  _FLfile* file() const { return fFile; }
  const std::string& name() const { return fName; }

  // The copy is complete.
  void finish()
  {
    if (FLclose(std::exchange(fFile, nullptr)) != 0)
      throw Failure(fName, FLstrerror(flerrno));
    if (fPartial.empty())
      return;
    std::error_code failure;
    fs::rename(fPartial, fReal, failure);
    if (failure)
      throw Failure(fName, failure.message());
    fPartial.clear();
    removeOnSignal(kPartialFile, nullptr);
  }

private:
  const std::string fName;
  fs::path fReal;       // where links lead to
  std::string fPartial; // what is written while it is not complete
  _FLfile* fFile = nullptr;
};

} // namespace

int copy(Console& console, Source& source, const std::string& target)
{
  std::error_code none;
  if (target != "-" && fs::equivalent(source.name(), target, none))
    throw Failure(target, "input and output are the same file");
  source.spool();
  Measure measure(console, source.name());
  Walker(source, measure).walk();
  if (measure.errors() != 0)
  {
    console.complain(source.name() + ": not copied");
    return measure.status();
  }
  source.rewind();
  Target output(target);
  Write write(measure.takeCorrections(), output.name(), output.file());
  Walker(source, write).walk();
  source.close();
  output.finish();
  return kValid;
}
