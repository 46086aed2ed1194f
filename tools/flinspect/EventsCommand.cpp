#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"

#include "Foundation/Iff/TiffFile.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::size_t kDeepest = 32; // levels that are shown by indentation

// A line for each event.
class Events : public TiffParserCallback
{
public:
  explicit Events(Console& console, Tint64 total)
    : fConsole(console)
    , fTotal(total)
  {
    setMethodsToUse(1);
  }

  int iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type) override
  {
    return begin(file, "list ", group, type);
  }
  int iffVFormMethod1(TiffFile& file, TiffTag group, TiffTag type) override
  {
    return begin(file, "form ", group, type);
  }

  int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
  {
    fLast = {id, file.tell() - 8};
    fIsInGroup = false;
    if (id == TiffTag::kGEND && !fGroups.empty())
    {
      fLast = fGroups.back();
      fGroups.pop_back();
    }
    put(file, "leaf " + idText(id.value()) + ' ' + (size < 0 ? "unknown" : std::to_string(size)));
    return 0;
  }

  // For a message: where the parse of the file has stopped, seen from the chunk that it was told of last.
  std::string place(TiffFile& file) const
  {
    if (fLast.fOffset < 0)
      return {};
    TiffTag id;
    const bool isInside = fIsInGroup || file.beginGet(id, nullptr) == kFLok; // its header is there until it is left
    return (isInside ? ", in " : ", behind ") + idText(fLast.fId.value()) + " at offset " +
           std::to_string(fLast.fOffset);
  }

private:
  struct Place
  {
    TiffTag fId;
    Tint64 fOffset; // of the header
  };

  int begin(const TiffFile& file, const char* event, TiffTag group, TiffTag type)
  {
    put(file, event + idText(group.value()) + ' ' + idText(type.value()));
    fLast = {group, file.tell() - 12};
    fIsInGroup = true;
    fGroups.push_back(fLast);
    return 0;
  }

  void put(const TiffFile& file, const std::string& event)
  {
    fConsole.put(std::string(2 * std::min(fGroups.size(), kDeepest), ' ') + event + '\n');
    fConsole.progress(file.tell(), fTotal);
  }

  Console& fConsole;
  const Tint64 fTotal;
  std::vector<Place> fGroups; // that are open
  Place fLast{{}, -1};        // the chunk of the last event; for the end of a group, that
  bool fIsInGroup = false;    // it is a group that was just entered
};

} // namespace

int showEvents(Console& console, Source& source)
{
  Events events(console, source.size());
  TiffFile file;
  file.initInheritance(source.release());
  file.setCallbackObject(&events);
  const int status = file.parse();
  // What the engine gives where a skip goes past the end, of a file and of a pipe.
  const bool endsTooSoon = (status == kFLioError && errno == ENODATA) || status == kFLpastBlock;
  const std::string problem = endsTooSoon ? "the file ends" : FLstrerror(status);
  const Tint64 offset = source.size() < 0 ? file.tell() : std::min(file.tell(), source.size());
  const std::string subject = source.name() + ": offset " + std::to_string(offset);
  if ((status == kFLioError && !endsTooSoon) || status == kFLnoMemory)
    throw Failure(subject, problem);
  if (status != 0)
    console.complain(subject + ": error: " + problem + events.place(file));
  if (file.close() != 0)
    throw Failure(source.name(), FLstrerror(flerrno));
  return status == 0 ? kValid : kInvalid;
}
