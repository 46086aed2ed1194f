// Writes a form with a group of unknown size in it. Needs a compiler that leaves `typeof` to be a name.
#include <Foundation/Foundation.h>

#include <cstdio>
#include <string_view>

namespace {

struct Tag
{
  constexpr Tag(std::string_view text)
  {
    for (const char c : text)
      typeof = typeof << 8 | static_cast<unsigned char>(c);
  }
  TuInt32 typeof = 0;
};

} // namespace

int main(int argc, char** argv)
{
  constexpr Tag form("FORM"), list("LIST"), test("TEST"), name("NAME");
  _FLfile* file = argc == 2 ? FLopenpath(argv[1], "w") : nullptr;
  const bool good = file && FLbgnwritegroup(file, form.typeof, test.typeof) == 0 &&
                    FLbgnputchunk(file, name.typeof, 5) == 0 && FLput(file, "Thing", 5) == 5 &&
                    FLendputchunk(file) == 0 && FLbgnwritegroup(file, list.typeof, test.typeof) == 0;
  if (!good || FLclose(file) != 0) // ends both groups
  {
    std::printf("writer: %s\n", FLstrerror(flerrno));
    return 1;
  }
  return 0;
}
