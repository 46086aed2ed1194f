#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace {

// Writes one file for each chunk that is asked for.
class Extract : public Inspection
{
public:
  Extract(Console& console, const Source& source, const std::vector<std::string>& paths, const std::string& directory)
    : Inspection(console, source.name())
    , fPaths(paths.begin(), paths.end())
    , fDirectory(directory)
  {
    std::error_code failure;
    std::filesystem::create_directories(fDirectory, failure);
    if (failure)
      throw Failure(directory, failure.message());
  }

  ~Extract() override
  {
    if (!fFile)
      return;
    FLsettmp(fFile); // a file that is not complete
    FLclose(fFile);
  }

  bool begin(const Chunk& chunk) override
  {
    bool isWanted = fPaths.empty();
    for (ChunkPath& path : fPaths)
    {
      path.begin(chunk.fId, chunk.fDepth);
      isWanted = isWanted || path.isInside();
    }
    if (chunk.fIsGroup)
      return false;
    ++fNumber;
    if (!isWanted)
      return false;
    fTarget = (fDirectory / fileName(chunk.fId)).string();
    fFile = FLopenpath(fTarget.c_str(), "wx");
    if (!fFile)
      throw Failure(fTarget, FLstrerror(flerrno));
    return true;
  }

  void data(const unsigned char* bytes, std::size_t count) override
  {
    if (FLwrite(fFile, bytes, static_cast<long>(count)) != static_cast<long>(count))
      throw Failure(fTarget, FLstrerror(flerrno));
  }

  bool end(const Chunk& chunk) override
  {
    if (fFile)
    {
      if (FLclose(std::exchange(fFile, nullptr)) != 0)
      {
        std::error_code ignored;
        std::filesystem::remove(fTarget, ignored);
        throw Failure(fTarget, FLstrerror(flerrno));
      }
      fConsole.put(chunk.fLength, 10);
      fConsole.put("  " + printable(fTarget) + "\n");
    }
    for (ChunkPath& path : fPaths)
      path.end(chunk.fDepth);
    return fPaths.empty() ||
           !std::all_of(fPaths.begin(), fPaths.end(), [](const ChunkPath& path) { return path.isOver(); });
  }

  void requireAll() const
  {
    for (const ChunkPath& path : fPaths)
      if (!path.wasFound())
        throw Failure(fName, "no chunk " + path.text());
  }

private:
  // The number of the plain chunk in the file makes the name unique, also where case does not count, and no name of a
  // device; it stays the same whichever chunks are asked for. Of the id only what every system accepts is left.
  std::string fileName(TuInt32 id) const
  {
    std::string name = std::to_string(fNumber);
    name.insert(0, 6 - std::min<std::size_t>(name.size(), 6), '0');
    name += '-';
    for (int shift = 24; shift >= 0; shift -= 8)
    {
      const auto c = static_cast<char>(id >> shift & 0xFF);
      const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
      name += isPlain ? c : '_';
    }
    return name;
  }

  std::vector<ChunkPath> fPaths;
  const std::filesystem::path fDirectory;
  Tint64 fNumber = 0; // of the plain chunk at hand, from 1
  std::string fTarget;
  _FLfile* fFile = nullptr;
};

} // namespace

int extract(Console& console, Source& source, const std::vector<std::string>& paths, const std::string& directory)
{
  Extract extract(console, source, paths, directory);
  Walker(source, extract).walk();
  source.close();
  extract.requireAll();
  return extract.status();
}
