#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"

#include "Foundation/Iff/TiffFile.h"

#include <algorithm>

namespace {

constexpr int kDeepest = 32; // levels that are shown by indentation

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
    fDepth -= id == TiffTag::kGEND && fDepth > 0;
    put(file, "leaf " + idText(id.value()) + ' ' + (size < 0 ? "unknown" : std::to_string(size)));
    return 0;
  }

private:
  int begin(const TiffFile& file, const char* event, TiffTag group, TiffTag type)
  {
    put(file, event + idText(group.value()) + ' ' + idText(type.value()));
    ++fDepth;
    return 0;
  }

  void put(const TiffFile& file, const std::string& event)
  {
    fConsole.put(std::string(2 * std::size_t(std::min<Tint64>(fDepth, kDeepest)), ' ') + event + '\n');
    fConsole.progress(file.tell(), fTotal);
  }

  Console& fConsole;
  const Tint64 fTotal;
  Tint64 fDepth = 0;
};

} // namespace

int showEvents(Console& console, Source& source)
{
  Events events(console, source.size());
  TiffFile file;
  file.initInheritance(source.release());
  file.setCallbackObject(&events);
  const int status = file.parse();
  const std::string subject = source.name() + ": offset " + std::to_string(file.tell());
  if (status == kFLioError || status == kFLnoMemory)
    throw Failure(subject, FLstrerror(status));
  if (status != 0)
    console.complain(subject + ": error: " + FLstrerror(status));
  if (file.close() != 0)
    throw Failure(source.name(), FLstrerror(flerrno));
  return status == 0 ? kValid : kInvalid;
}
