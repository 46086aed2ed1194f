// Writes a picture's palette as a form: one chunk whose size is known, one whose size is found out while it is written,
// and one that is filled in place.
#include "Foundation/Iff/FL.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr TuInt32 id(const char (&text)[5])
{
  TuInt32 value = 0;
  for (int i = 0; i < 4; ++i)
    value = value << 8 | static_cast<unsigned char>(text[i]);
  return value;
}

} // namespace

int main(int argc, char** argv)
{
  const char* name = argc > 1 ? argv[1] : "palette.iff";
  _FLfile* file = FLopen(name, "w");
  if (!file)
  {
    FLperror(name);
    return 1;
  }
  FLbgnwritegroup(file, id("FOR4"), id("PALT"));

  FLbgnputchunk(file, id("NAME"), 5);
  FLput(file, "grays", 5);
  FLendputchunk(file); // pads

  FLbgnputchunk(file, id("LINE"), -1);
  for (int line = 0; line < 3; ++line)
    FLputs(file, "a line of text");
  FLendputchunk(file); // fills the size in

  if (void* colours = FLbgnbufchunk(file, id("CMAP"), 256))
  {
    for (int i = 0; i < 256; ++i)
      static_cast<unsigned char*>(colours)[i] = static_cast<unsigned char>(i);
    FLendbufchunk(file, 0);
  }

  if (FLclose(file) != 0) // completes the form; 0 means that every byte is in its place
  {
    FLperror(name);
    std::remove(name);
    return 1;
  }
  std::printf("wrote %s\n", name);
  return 0;
}
