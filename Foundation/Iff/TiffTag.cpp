#include "Foundation/Iff/TiffTag.h"

#include <ostream>

std::ostream& operator<<(std::ostream& out, TiffTag tag)
{
  constexpr char kDigits[] = "0123456789ABCDEF";
  char text[16];
  std::size_t length = 0;
  const TiffTag::Ttext characters = tag.valueTchar();
  for (const char c : std::string_view(characters))
  {
    if (c >= 0x20 && c <= 0x7E && c != '\\')
    {
      text[length++] = c;
      continue;
    }
    text[length++] = '\\';
    text[length++] = 'x';
    text[length++] = kDigits[static_cast<unsigned char>(c) >> 4];
    text[length++] = kDigits[static_cast<unsigned char>(c) & 0xF];
  }
  return out << std::string_view(text, length);
}
