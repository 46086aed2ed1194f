// Names that are kept once, and numbered so that each thing has one of its own.
#include <Foundation/String/StringTables.h>
#include <Foundation/String/TnameObject.h>

#include <iostream>

int main()
{
  Tname lamp("lamp"), copy = lamp; // one text, two holders
  copy.makeUnique();               // "lamp1"
  const Tname next("lamp#");       // '#' asks for a name of its own: "lamp2"
  const Tname tenth("lamp10");
  for (const TnameDictionaryNode& each : Tname::nameTable()) // 2 comes before 10
    std::cout << each.key() << " is held by " << each.data().count() << '\n';
  std::cout << Tname::validateName("2nd lamp") << '\n'; // "_2nd_lamp"

  TnameObject left(lamp), right(lamp), middle(next);
  int found = 0;
  for (const TnameObject* each : TnameObjectIterator("lamp"))
  {
    std::cout << each->name() << (each->hasUniqueName() ? " alone\n" : " among others\n");
    ++found;
  }

  TstringHashTable colours;
  colours.insert("lamp", "white");
  colours.insertReplace("lamp", "yellow");
  for (const auto& each : colours)
    std::cout << each.key() << " is " << each.value() << '\n';
  return copy == "lamp1" && next == "lamp2" && next < tenth && found == 2 && *colours.find("lamp") == "yellow" ? 0 : 1;
}
