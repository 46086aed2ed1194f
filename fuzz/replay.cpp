// Runs every file of the folders given as arguments through a fuzzer's target, where there is no fuzzing engine.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

int main(int argc, char** argv)
{
  int empty = argc < 2;
  for (int i = 1; i < argc; ++i)
  {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
    {
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
      std::fprintf(stderr, "%s\n", entry.path().string().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
      ++count;
    }
    std::printf("%s: %d inputs\n", argv[i], count);
    empty += count == 0;
  }
  return empty ? 1 : 0;
}
