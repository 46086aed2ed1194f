// Reads an arbitrary file into values. What can be read can be written; and what was written reads back as the same
// values, through the file and through text.
//
// Input: the file.

#include "../Iff/FLmedium.h"

#include "Foundation/Data/TargList.h"
#include "Foundation/Data/TdataCompound.h"
#include "Foundation/Data/TdataReader.h"
#include "Foundation/Iff/TiffFile.h"

#include <vector>

namespace {

// What the parse came to; the values up to a failure otherwise.
int read(const std::string& bytes, TDarray& values)
{
  const Held held(kBlock, bytes, true);
  TiffFile file(held.name(), "r");
  REQUIRE(file.isActive());
  TdataReader reader;
  file.setCallbackObject(&reader);
  const int status = file.parse();
  values = reader.values();
  return status;
}

std::string write(const TDarray& values, std::size_t room)
{
  std::string block(room, '\xAA');
  const std::string name = memoryName(block.data(), room);
  TiffFile file(name.c_str(), "w");
  for (const Tdata& each : values)
    REQUIRE(each.writeBinary(file) == 0);
  block.resize(std::size_t(file.tell()));
  REQUIRE(file.close() == 0);
  return block;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
  if (size > 60000)
    return 0;
  TDarray values, again;
  read(std::string(data, data + size), values);
  const std::string written = write(values, 8 * size + 1000);
  REQUIRE(read(written, again) == 0);
  REQUIRE(write(again, 8 * size + 1000) == written);

  for (Tdata& each : values)
  {
    Tstring text;
    each.appendText(text, 5, true);
    TstringArgList arguments;
    REQUIRE(arguments.setText(text));
    unsigned int next = 0;
    Tdata value;
    REQUIRE(value.readASCII(arguments, next, -1) == 0 && next == arguments.length());
    Tstring same;
    value.appendText(same, 5, true);
    REQUIRE(text == same);
  }
  return 0;
}
