// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

int main()
{
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  TdoubleArray numbers{1.5, 2};
  numbers.addLast(-3);
  const TstringArray names{text, "b"};
  const Tname arm("arm9"), copy = arm, none;
  const TnameString key("b10");
  TnameDictionary parts;
  parts.insert(key, TnameInfo());
  parts.insert(TnameString("b9"), TnameInfo());
  TstringHashTable colours;
  colours.insert("lamp", "white");
  const bool good = empty == blank && text == sharing && borrowed.length() == 8 && copy == arm && none != arm;
  return good && numbers.length() + names.length() == 5 && parts.validate() && colours.find("lamp") ? 0
                                                                                                    : 1; // stop here
}
