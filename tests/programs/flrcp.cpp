// The transfer command of the tests: copies the file behind the colon to standard output, or with -w from standard
// input. A path "fail" fails half-way.
#include <cstdio>
#include <cstring>
#include <string>

#ifdef _WIN32
#  include <fcntl.h>
#  include <io.h>
#endif

int main(int argc, char** argv)
{
#ifdef _WIN32
  _setmode(0, _O_BINARY);
  _setmode(1, _O_BINARY);
#endif
  const bool writes = argc == 3 && std::strcmp(argv[1], "-w") == 0;
  const char* colon = argc >= 2 ? std::strchr(argv[argc - 1], ':') : nullptr;
  if (!colon)
    return 2;
  if (std::strcmp(colon + 1, "fail") == 0)
    return std::fwrite("FORM\0\0\0\x10TEST", 1, 12, stdout) == 12 ? 3 : 4;
  std::FILE* file = std::fopen(colon + 1, writes ? "wb" : "rb");
  if (!file)
    return 1;
  std::FILE* from = writes ? stdin : file;
  std::FILE* to = writes ? file : stdout;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, from))
  {
    if (std::fwrite(buffer, 1, got, to) != got)
      return 1;
  }
  return std::fclose(file) == 0 && std::fflush(stdout) == 0 ? 0 : 1;
}
