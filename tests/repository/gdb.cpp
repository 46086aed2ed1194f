// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

int main()
{
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  TdoubleArray numbers{1.5, 2};
  numbers.addLast(-3);
  const TstringArray names{text, "b"};
  const TtimeRange range(-250, 9000);
  const TtimeValueArray keys{{6000, 1.5}};
  const TtimeUnit unit(kTime30Fps);
  const Tduration span(95399);
  const Ttime end(951868799);
  const TosTime ticks(40);
  return empty == blank && text == sharing && borrowed.length() == 8 && numbers.length() + names.length() == 5 &&
             range.contains(keys[0].time()) && unit != TtimeUnit() && end - span > Ttime(ticks.ticks())
  TtypedStack<Tint32> stack;
  stack.push(7);
  stack.push(8);
  return empty == blank && text == sharing && borrowed.length() == 8 && numbers.length() + names.length() == 5 &&
             stack.length() == 2
           ? 0
           : 1; // stop here
}
