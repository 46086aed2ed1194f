// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

int main()
{
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  return empty == blank && text == sharing && borrowed.length() == 8 ? 0 : 1; // stop here
}
