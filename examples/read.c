/* Prints the chunks of a file, each with its size and the first bytes of its data, indented by their nesting.
   Without a file, reads a form that stands in memory. */
#include "Foundation/Iff/FL.h"

#include <stdio.h>

static void print(int depth, const char* kind, TuInt32 id, Tint32 size)
{
  printf("%*s%s %c%c%c%c %ld\n", 2 * depth, "", kind, (int)(id >> 24), (int)(id >> 16 & 255), (int)(id >> 8 & 255),
         (int)(id & 255), (long)size);
}

int main(int argc, char** argv)
{
  static const unsigned char form[] = "FORM\0\0\0\x1ETEST"
                                      "NAME\0\0\0\x05Thing\0"
                                      "LIST\0\0\0\x04TEST";
  char inMemory[64];
  _FLfile* file;
  int depth = 0, status = 0;
  snprintf(inMemory, sizeof inMemory, "mem:0x%llx,%u", (unsigned long long)(size_t)form, (unsigned)sizeof form - 1);
  file = FLopen(argc > 1 ? argv[1] : inMemory, "r");
  while (file && status == 0)
  {
    TuInt32 id, type;
    Tint32 size;
    status = FLbgnget(file, &id, &size);
    if (status == kFLgroupHeader && (status = FLbgnreadgroup(file, &type, &size)) == 0)
      print(depth++, "group", type, size);
    else if (status == kFLok)
    {
      print(depth, "chunk", id, size);
      status = FLendget(file); /* what is not read is skipped */
    }
    else if (status == kFLend && depth-- > 0)
      status = FLendrgroup(file);
  }
  if (status != kFLend)
    FLperror(argc > 1 ? argv[1] : "form");
  return FLclose(file) != 0 || status != kFLend;
}
