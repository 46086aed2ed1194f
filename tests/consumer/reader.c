/* Checks what the writer wrote. */
#include <Foundation/Iff/FL.h>

#include <stdio.h>
#include <string.h>

int main(int argc, char** argv)
{
  TuInt32 type = 0, id = 0;
  Tint32 formSize = 0, nameSize = 0, listSize = 0;
  char name[6] = "";
  _FLfile* file = argc == 2 ? FLopenpath(argv[1], "r") : NULL;
  int good = file && FLbgnreadgroup(file, &type, &formSize) == 0 && type == 0x54455354 &&
             FLbgnget(file, &id, &nameSize) == 0 && id == 0x4E414D45 && FLget(file, name, 5) == 5 &&
             strcmp(name, "Thing") == 0 && FLendget(file) == 0 && FLbgnreadgroup(file, &type, &listSize) == 0 &&
             FLbgnget(file, &id, NULL) == kFLend && FLendrgroup(file) == 0 && FLendrgroup(file) == 0;
  good = good && nameSize == 5 && listSize == 4 && formSize == 4 + 8 + 6 + 8 + 4;
  if (!good)
    printf("reader: %s, sizes %ld %ld %ld\n", FLstrerror(flerrno), (long)formSize, (long)nameSize, (long)listSize);
  return FLclose(file) != 0 || !good;
}
