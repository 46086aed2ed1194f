// Arguments as text: what is accepted reads back from what it writes, and numbers do so bit for bit.

#include "Foundation/Data/TargList.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

void require(bool holds)
{
  if (!holds)
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  TstringArgList list, again;
  if (size == 0 || !list.setText(Tstring(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1))))
    return 0;
  Tstring text;
  list.appendAll(text, data[0] % 2 ? TargList::kQuoteAll : 0);
  require(again.setText(text) && again.length() == list.length());
  for (unsigned i = 0; i < list.length(); ++i)
  {
    require(again.values()[i] == list.values()[i]);
    TdoubleArgList number(TdoubleArray{0});
    if (!list.asDouble(i, number.values()[0]))
      continue;
    double read = 0;
    TstringArgList written;
    text.clear();
    number.appendAll(text);
    require(written.setText(text) && written.asDouble(0, read));
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are meant
    require(std::memcmp(&read, number.values().data(), sizeof read) == 0);
    Tint32 whole;
    if (list.asInt32(i, whole))
      require(whole == read);
  }
  return 0;
}
