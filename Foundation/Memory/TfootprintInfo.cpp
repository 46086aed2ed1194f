#include "Foundation/Memory/TfootprintInfo.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

void TfootprintInfo::add(const char* name, TuInt64 used, TuInt64 allocated)
{
  const std::string key = name ? name : "";
  auto entry = std::find_if(fEntries.begin(), fEntries.end(), [&key](const Entry& each) { return each.name == key; });
  if (entry == fEntries.end())
  {
    fEntries.emplace_back().name = key;
    entry = fEntries.end() - 1;
  }
  ++entry->objects;
  entry->used += used;
  entry->allocated += allocated;
}

TfootprintInfo::Entry TfootprintInfo::total() const
{
  Entry sum;
  sum.name = "total";
  for (const Entry& entry : fEntries)
  {
    sum.objects += entry.objects;
    sum.used += entry.used;
    sum.allocated += entry.allocated;
  }
  return sum;
}

std::ostream& operator<<(std::ostream& out, const TfootprintInfo& info)
{
  const auto line = [&out](const TfootprintInfo::Entry& entry) {
    out << std::setw(10) << entry.objects << std::setw(15) << entry.used << std::setw(15) << entry.allocated << "  "
        << entry.name << '\n';
  };
  out << "   objects     bytes used      allocated  name\n";
  for (const TfootprintInfo::Entry& entry : info.entries())
    line(entry);
  line(info.total());
  return out;
}
