#include "Exact.h"

#include "Ident.h"

#include <algorithm>
#include <utility>

namespace {

constexpr Tint64 kLargest = 0x7FFFFFFF;

} // namespace

// The second pass. Departures were reported by the first.
class Exact::Writer : public Receiver
{
public:
  Writer(const std::vector<Correction>& corrections, std::string target, _FLfile* file)
    : fCorrections(corrections)
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

  const std::vector<Correction>& fCorrections;
  const std::string fTarget;
  _FLfile* const fFile;
  std::size_t fNext = 0; // the correction that comes next
  Tint64 fCount = 0;
};

Exact::Exact(Console& console, Source& source)
  : Inspection(console, source.name())
{
  Walker(source, *this).walk();
  std::sort(fCorrections.begin(), fCorrections.end(),
            [](const Correction& a, const Correction& b) { return a.fNumber < b.fNumber; });
}

void Exact::write(Source& source, const std::string& target, _FLfile* file) const
{
  source.rewind();
  Writer writer(fCorrections, target, file);
  Walker(source, writer).walk();
}

bool Exact::begin(const Chunk& chunk)
{
  ++fCount;
  if (chunk.fIsGroup)
    fGroups.push_back({fCount, 4});
  return false;
}

bool Exact::end(const Chunk& chunk)
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
