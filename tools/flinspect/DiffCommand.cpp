#include "Commands.h"
#include "Exact.h"
#include "Ident.h"

#include "Foundation/Iff/TiffFile.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kBlock = 0x10000;
constexpr std::size_t kAhead = 32;    // chunks of a group that are looked at for where two groups meet again
constexpr std::size_t kCounted = 256; // ids of a group whose chunks are numbered; others have the number 0

struct Head
{
  TuInt32 fId = 0;
  TuInt32 fType = 0; // of a group
  Tint32 fSize = 0;
  Tint64 fOffset = 0;

  bool isGroup() const { return (FLidflags(fId) & kFLidGroup) != 0; }
  bool operator==(const Head& other) const { return fId == other.fId && fType == other.fType; }
};

// One of the two files. Its chunks are taken in order. All sizes are known and right: if need be, those of a copy.
class Side
{
public:
  // Throws Failure when the file is not valid.
  Side(Console& console, Source& source)
    : fConsole(console)
    , fName(source.name())
  {
    source.spool();
    const Exact exact(console, source);
    if (exact.status() != kValid)
      throw Failure(fName, "not compared");
    if (exact.isAsItIs())
      source.rewind();
    else
      source.replace([&](const std::string& path, _FLfile* file) { exact.write(source, path, file); });
    fTotal = source.size();
    fFile.initInheritance(source.release());
    fLevels.push_back({0, 0, Tint64(1) << 62, 1, {}});
  }

  const std::string& name() const { return fName; }

  // Takes the next chunk of the group. False at its end.
  bool next()
  {
    const Tint64 offset = fFile.tell();
    TiffTag id;
    const int status = fFile.beginGet(id, &fHead.fSize);
    if (status == kFLend)
      return false;
    if (status != kFLok && status != kFLgroupHeader)
      fail(status);
    const Tint64 start = fFile.tell();
    fHead = {id.value(), 0, fHead.fSize, offset};
    if (status == kFLgroupHeader)
    {
      read(offset, fHead);
      require(fFile.seek(start));
    }
    fNumber = count(fHead.fId);
    fConsole.progress(offset, fTotal);
    return true;
  }

  const Head& head() const { return fHead; }

  // The chunk at hand and those behind it in its group, kAhead at most.
  std::vector<Head> ahead()
  {
    const Tint64 back = fFile.tell();
    std::vector<Head> heads(1, fHead);
    for (Head head = fHead; heads.size() < kAhead; heads.push_back(head))
    {
      const Tint64 end = head.fOffset + 8 + head.fSize;
      const Tint64 next = end + (-end & alignmentMask(head));
      if (next >= fLevels.back().fEnd || !read(next, head))
        break;
    }
    require(fFile.seek(back));
    return heads;
  }

  void skip() { require(fFile.endGet()); }

  void enter()
  {
    TiffTag type;
    require(fFile.beginReadGroup(type));
    fLevels.push_back({fHead.fId, fNumber, fHead.fOffset + 8 + fHead.fSize, alignmentMask(fHead), {}});
  }

  // Leaves the group. False at the root.
  bool leave()
  {
    if (fLevels.size() == 1)
      return false;
    require(fFile.endReadGroup());
    fLevels.pop_back();
    return true;
  }

  // The next bytes of the chunk at hand.
  const unsigned char* get(std::size_t count)
  {
    fBlock.resize(kBlock);
    flerrno = 0;
    if (fFile.get(fBlock.data(), long(count)) != long(count))
      fail(flerrno != 0 ? flerrno : int(kFLincomplete));
    fConsole.progress(fFile.tell(), fTotal);
    return fBlock.data();
  }

  // The way to the chunk at hand.
  std::string path() const
  {
    std::string path;
    for (std::size_t i = 1; i < fLevels.size(); ++i)
      path += step(fLevels[i].fId, fLevels[i].fNumber) + '/';
    return path + step(fHead.fId, fNumber);
  }

  void close()
  {
    if (fFile.close() != 0)
      fail(flerrno);
  }

private:
  struct Level
  {
    TuInt32 fId;
    TuInt32 fNumber;
    Tint64 fEnd;
    unsigned fMask;                                   // alignment - 1
    std::vector<std::pair<TuInt32, TuInt32>> fCounts; // of the chunks taken, by id
  };

  static std::string step(TuInt32 id, TuInt32 number)
  {
    return idText(id) + (number == 1 ? "" : number == 0 ? "[?]" : "[" + std::to_string(number) + "]");
  }

  unsigned alignmentMask(const Head& head) const
  {
    return std::max(fLevels.back().fMask, std::max(FLidflags(head.fId) & kFLidAlign, 1U) - 1);
  }

  TuInt32 count(TuInt32 id)
  {
    auto& counts = fLevels.back().fCounts;
    auto found = std::find_if(counts.begin(), counts.end(), [id](const auto& each) { return each.first == id; });
    if (found == counts.end())
    {
      if (counts.size() == kCounted)
        return 0;
      found = counts.insert(found, {id, 0});
    }
    return ++found->second;
  }

  // Reads the header at an offset. False at the end of the file.
  bool read(Tint64 offset, Head& head)
  {
    const auto word = [this](TuInt32& value) {
      unsigned char bytes[4] = {};
      const bool isThere = fFile.read(bytes, 4) == 4;
      value = TuInt32(bytes[0]) << 24 | TuInt32(bytes[1]) << 16 | TuInt32(bytes[2]) << 8 | TuInt32(bytes[3]);
      return isThere;
    };
    TuInt32 size = 0;
    head.fOffset = offset;
    head.fType = 0;
    if (fFile.seek(offset) != 0 || !word(head.fId) || !word(size))
      return false;
    head.fSize = Tint32(size);
    return !head.isGroup() || word(head.fType);
  }

  void require(int status) const
  {
    if (status != 0)
      fail(status);
  }

  [[noreturn]] void fail(int code) const { throw Failure(fName, FLstrerror(code)); }

  Console& fConsole;
  const std::string fName;
  Tint64 fTotal = -1;
  TiffFile fFile;
  std::vector<Level> fLevels; // the root of the file first
  Head fHead;
  TuInt32 fNumber = 0;
  std::vector<unsigned char> fBlock;
};

class Diff
{
public:
  Diff(Console& console, Source& a, Source& b)
    : fConsole(console)
    , fA(console, a)
    , fB(console, b)
  {
  }

  int run()
  {
    std::size_t onlyA = 0, onlyB = 0; // how many chunks from here on the other file does not have
    for (bool hasA = fA.next(), hasB = fB.next();;)
    {
      if (!hasA && !hasB)
      {
        if (!fA.leave() || !fB.leave())
          break;
        hasA = fA.next();
        hasB = fB.next();
        continue;
      }
      if (hasA && hasB && onlyA == 0 && onlyB == 0)
        findMeeting(onlyA, onlyB);
      if (hasA && (onlyA != 0 || !hasB))
        hasA = passOver(fA, onlyA);
      else if (hasB && (onlyB != 0 || !hasA))
        hasB = passOver(fB, onlyB);
      else
      {
        compare();
        hasA = fA.next();
        hasB = fB.next();
      }
    }
    fA.close();
    fB.close();
    return fDiffers ? kInvalid : kValid;
  }

private:
  // How many chunks to pass over in each file to come to two that belong together, as few as possible. Groups of
  // one id belong together for want of better, whatever their types.
  void findMeeting(std::size_t& onlyA, std::size_t& onlyB)
  {
    if (fA.head() == fB.head())
      return;
    const std::vector<Head> a = fA.ahead(), b = fB.ahead();
    for (std::size_t sum = 1; sum < a.size() + b.size() - 1; ++sum)
    {
      for (std::size_t i = sum < b.size() ? 0 : sum - b.size() + 1; i <= sum && i < a.size(); ++i)
      {
        if (!(a[i] == b[sum - i]))
          continue;
        onlyA = i;
        onlyB = sum - i;
        return;
      }
    }
    if (fA.head().fId == fB.head().fId)
      return;
    onlyA = a.size();
    onlyB = b.size();
  }

  // Whether the group goes on.
  bool passOver(Side& side, std::size_t& count)
  {
    report(side.path(), "only in " + printable(side.name()));
    count -= count != 0;
    side.skip();
    return side.next();
  }

  // Compares the chunks at hand; of groups, what is before the chunks in them.
  void compare()
  {
    const Head &a = fA.head(), &b = fB.head();
    if (a.isGroup())
    {
      if (a.fType != b.fType)
        report(pathOfBoth(), "type " + idText(a.fType) + " and " + idText(b.fType));
      fA.enter();
      fB.enter();
      return;
    }
    const Tint64 shared = std::min(a.fSize, b.fSize);
    Tint64 same = 0;
    for (std::size_t piece = 0, equal = 0; same < shared && piece == equal; same += Tint64(equal))
    {
      piece = std::size_t(std::min<Tint64>(shared - same, kBlock));
      const unsigned char* const bytes = fA.get(piece);
      equal = std::size_t(std::mismatch(bytes, bytes + piece, fB.get(piece)).first - bytes);
    }
    if (same != a.fSize || same != b.fSize)
      report(
        pathOfBoth(),
        "differs from offset " + std::to_string(same) + " on" +
          (a.fSize == b.fSize ? "" : ", " + std::to_string(a.fSize) + " and " + std::to_string(b.fSize) + " bytes"));
    fA.skip();
    fB.skip();
  }

  std::string pathOfBoth() const
  {
    const std::string a = fA.path(), b = fB.path();
    return a == b ? a : a + " (" + b + " in " + printable(fB.name()) + ")";
  }

  void report(const std::string& path, const std::string& text)
  {
    fDiffers = true;
    fConsole.put(path + ": " + text + '\n');
  }

  Console& fConsole;
  Side fA, fB;
  bool fDiffers = false;
};

} // namespace

int diff(Console& console, Source& a, Source& b)
{
  return Diff(console, a, b).run();
}
