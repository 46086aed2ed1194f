// Parses a chunk file by callback: prints its tree, each chunk with its size, and the texts of its names. Without an
// argument it parses a small file of its own, which it writes into memory first, through a buffered group.
#include "Foundation/Iff/TiffFile.h"

#include <cstdint>
#include <iostream>
#include <string>

namespace {

class Printer : public TiffParserCallback
{
public:
  Printer() { setMethodsToUse(1); }

  int iffVFormMethod1(TiffFile&, TiffTag group, TiffTag type) override { return begin(group, type); }
  int iffVListMethod1(TiffFile&, TiffTag group, TiffTag type) override { return begin(group, type); }

  // The end of each group comes as a leaf, too.
  int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
  {
    if (id == TiffTag::kGEND)
    {
      fIndent.resize(fIndent.size() < 2 ? 0 : fIndent.size() - 2);
      return 0;
    }
    std::cout << fIndent << id << " " << (size < 0 ? "?" : std::to_string(size)); // not known, out of a pipe
    if (id == TiffTag::kNAME)
    {
      char name[80];
      file.getString(name, sizeof name);
      std::cout << " \"" << name << "\"";
    }
    std::cout << "\n";
    return 0; // what was not read is skipped
  }

private:
  std::string fIndent;

  int begin(TiffTag group, TiffTag type)
  {
    std::cout << fIndent << group << " " << type << "\n";
    fIndent += "  ";
    return 0;
  }
};

// A form of two chunks whose sizes nobody had to know in advance.
int writeLamp(const char* name)
{
  TiffFile file(name, "w");
  TiffFile::setBufferingMode(true);
  file.beginWriteGroup("FOR4", "LAMP");
  file.beginPut(TiffTag::kNAME);
  file.putString("desk lamp");
  file.endPut();
  file.beginPut("WATT");
  file.put("\x28", 1);
  file.endPut();
  const int status = file.endWriteGroup();
  return file.close() == 0 ? status : -1;
}

} // namespace

int main(int argc, char** argv)
{
  char block[44];
  const std::string memory =
    "mem:" + std::to_string(reinterpret_cast<std::uintptr_t>(block)) + "," + std::to_string(sizeof block);
  const char* name = argc > 1 ? argv[1] : memory.c_str();
  if (argc < 2 && writeLamp(name) != 0)
  {
    FLperror("writing");
    return 1;
  }
  TiffFile file(name, "r");
  Printer printer;
  file.setCallbackObject(&printer);
  if (!file.isActive() || file.parse() != 0)
  {
    file.perror(name);
    return 1;
  }
  return 0;
}
