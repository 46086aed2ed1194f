#include "Commands.h"
#include "Inspection.h"

namespace {

// Counts what is there; the departures go their usual way.
class Check : public Inspection
{
public:
  using Inspection::Inspection;

  bool begin(const Chunk& chunk) override
  {
    ++(chunk.fIsGroup ? fGroups : fChunks);
    return false;
  }

  void summarize(bool isValid) const
  {
    fConsole.put(printable(fName) + (isValid ? ": valid, " : ": not valid, ") + counted(fGroups, "group") + ", " +
                 counted(fChunks, "chunk"));
    if (errors() != 0)
      fConsole.put(", " + counted(errors(), "error"));
    if (oddities() != 0)
      fConsole.put(", " + (oddities() == 1 ? "1 oddity" : std::to_string(oddities()) + " oddities"));
    fConsole.put("\n");
  }

private:
  static std::string counted(Tint64 count, const char* thing)
  {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
  }

  Tint64 fGroups = 0;
  Tint64 fChunks = 0;
};

} // namespace

int check(Console& console, Source& source, bool strict)
{
  Check check(console, source.name());
  Walker(source, check).walk();
  source.close();
  const bool isValid = check.errors() == 0 && (!strict || check.oddities() == 0);
  check.summarize(isValid);
  return isValid ? kValid : kInvalid;
}
