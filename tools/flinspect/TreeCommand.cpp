#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"

#include <algorithm>

namespace {

constexpr TuInt32 kDeepest = 32; // levels that are shown by indentation

// A line for each chunk, printed as the walk meets it.
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
    addRemarks(chunk);
    fLine += '\n';
    fConsole.put(fLine);
    return false;
  }

private:
  // What is known of a chunk beyond its header: here what its id means, and its type.
  void addRemarks(const Chunk& chunk)
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
};

} // namespace

int showTree(Console& console, Source& source, bool inColour)
{
  Tree tree(console, source, inColour);
  Walker(source, tree).walk();
  source.close();
  return tree.status();
}
