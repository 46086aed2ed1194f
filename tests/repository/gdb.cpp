// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

int main()
{
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  TdoubleArray numbers{1.5, 2};
  numbers.addLast(-3);
  const TstringArray names{text, "b"};
  const TiffTagArray tags{TiffTag::kCAT, TiffTag::kFORx};
  return empty == blank && text == sharing && borrowed.length() == 8 && numbers.length() + names.length() + tags.length() == 7 ? 0 : 1; // stop here
}
