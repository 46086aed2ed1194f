// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

int main()
{
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  TdoubleArray numbers{1.5, 2};
  numbers.addLast(-3);
  const TstringArray names{text, "b"};
  [[maybe_unused]] const T3dFltPoint corner(1, 2.5, -3);
  [[maybe_unused]] const T3dDblPointArray corners{{1, 2, 3}};
  [[maybe_unused]] const T4dDblMatrix moved = T4dDblVector(7, 8, 9);
  [[maybe_unused]] const Tangle right(90, Tangle::kDegrees);
  return empty == blank && text == sharing && borrowed.length() == 8 && numbers.length() + names.length() == 5 ? 0 : 1; // stop here
}
