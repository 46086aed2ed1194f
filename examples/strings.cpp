// Texts that are shared until one of them changes.
#include <Foundation/String/Tstring.h>
#include <Foundation/String/TstringId.h>

#include <iostream>

int main()
{
  Tstring name("left arm");
  Tstring copy = name;              // shares the text
  copy.substitute("left", "right"); // splits it off: name is unchanged
  copy += ".001";
  if (copy.matches("right*"))
    std::cout << copy << " is beside " << name << '\n';

  Tstring base, number;
  if (copy.matchesRegexp("([^.]+)[.]([0-9]+)", &base, &number))
    std::cout << base << ", number " << number.asInt32() << '\n';

  Tstring title(TstringId::catalog(1207)); // what the installed catalogue says, else "1207"
  title += TstringId(12);
  std::cout << title << '\n';
  return name == "left arm" && base == "right arm" && title == "120712" ? 0 : 1;
}
