#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"
#include "LeafValue.h"

#include <algorithm>

namespace {

constexpr TuInt32 kDeepest = 32;         // levels that are shown by indentation
constexpr std::size_t kMostOfValue = 72; // characters of a value that are shown

// A line for each chunk, printed as the walk meets it; of a value, when its data have been read.
class Tree : public Inspection
{
public:
  Tree(Console& console, const Source& source, bool inColour)
    : Inspection(console, source.name())
    , fInColour(inColour)
  {
    fConsole.put("    offset       size pad  chunk\n");
  }

  bool begin(const Chunk& chunk) override
  {
    fConsole.put(chunk.fOffset, 10);
    if (chunk.fHasSize)
    {
      fConsole.put(Tint64(chunk.fSizeField), 11);
      fConsole.put(Tint64(chunk.padding(Tint64(chunk.fSizeField))), 4);
    }
    else
      fConsole.put(chunk.fSizeField == 0x80000002 ? "   streamed   -" : "    unknown   -");
    fLine.assign(2 + 2 * std::min(chunk.fDepth, kDeepest), ' ');
    if (chunk.fDepth > kDeepest)
      fLine += "(+" + std::to_string(chunk.fDepth - kDeepest) + ") ";
    if (chunk.fIsGroup)
    {
      addColoured("\x1b[1;34m", idText(chunk.fId));
      fLine += ' ';
      addColoured("\x1b[32m", idText(chunk.fType));
    }
    else
      fLine += idText(chunk.fId);
    addMeanings(chunk);
    fIsAwaited = fValue.begin(chunk);
    if (!fIsAwaited)
      fLine += '\n';
    fConsole.put(fLine);
    return fIsAwaited;
  }

  void data(const unsigned char* bytes, std::size_t count) override { fValue.data(bytes, count); }

  bool end(const Chunk&) override
  {
    if (fIsAwaited)
    {
      std::string value = fValue.text();
      if (value.size() > kMostOfValue)
        value.replace(kMostOfValue - 3, std::string::npos, "...");
      fConsole.put(value.empty() ? "\n" : " = " + value + '\n');
      fIsAwaited = false;
    }
    return true;
  }

  void departure(Severity severity, Tint64 offset, const std::string& message) override
  {
    if (fIsAwaited)
      fConsole.put("\n"); // and no value
    fIsAwaited = false;
    Inspection::departure(severity, offset, message);
  }

private:
  // What the id means, and of a group the type.
  void addMeanings(const Chunk& chunk)
  {
    std::string remark(meaningOf(chunk.fId));
    if (const std::string_view ofType = meaningOf(chunk.fType); chunk.fIsGroup && !ofType.empty())
      remark.append(": ").append(ofType);
    if (remark.empty())
      return;
    fLine += "  ";
    addColoured("\x1b[2m", remark);
  }

  void addColoured(const char* colour, std::string_view text)
  {
    if (fInColour)
      fLine += colour;
    fLine += text;
    if (fInColour)
      fLine += "\x1b[m";
  }

  const bool fInColour;
  std::string fLine;
  LeafValue fValue;
  bool fIsAwaited = false; // the value that goes on the line put last
};

} // namespace

int showTree(Console& console, Source& source, bool inColour)
{
  Tree tree(console, source, inColour);
  Walker(source, tree).walk();
  source.close();
  return tree.status();
}
