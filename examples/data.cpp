// The road from a file to values and back: a tree of values is written as a "FOR4"; its chunks are read again, each
// into the letter that its tag stands for. A chunk that no letter claims survives.
#include "Foundation/Data/TdataArrays.h"
#include "Foundation/Data/TdataMatrix.h"
#include "Foundation/Data/TdataReader.h"
#include "Foundation/Data/TdataTuple.h"
#include "Foundation/Data/TdataUnknown.h"
#include "Foundation/Data/TmetaLetter.h"
#include "Foundation/Iff/TiffFile.h"

#include <cstdio>
#include <iostream>

namespace {

// What TdataReader does with each chunk, step by step.
class Leaves : public TiffParserCallback
{
public:
  Leaves() { setMethodsToUse(1); }

  int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
  {
    void* bytes = size > 0 ? file.readChunk(&size) : nullptr;
    if (!bytes)
      return 0; // empty, or the end of a group
    const Tdata value(TmetaLetter::construct(id));
    auto left = static_cast<unsigned long>(size);
    if (value.letter().readBinary(id, left, bytes) == 0)
      std::cout << id << ": " << value << "\n";
    return 0;
  }
};

} // namespace

int main()
{
  const char* const name = "lamp.for4";

  auto* lamp = new TdataCompound;
  const Tdata tree(lamp);
  lamp->setGroup("FOR4", "LAMP");
  lamp->addData(Tdata(new Tdata3Float(1, 0.5, 0.25)));
  lamp->addData(Tdata(new TdataDoubleArray({60, 40.5})));
  lamp->addData(Tdata(new TdataMatrix(T4dDblVector(0, 2, 0))));
  auto* note = new TdataUnknown(TiffTag("NOTE"));
  for (const char c : {'h', 'i'})
    note->bytes().addLast(static_cast<unsigned char>(c));
  lamp->addData(Tdata(note));

  TiffFile out(name, "w");
  if (tree.writeBinary(out) != 0 || out.close() != 0)
  {
    out.perror(name);
    return 1;
  }

  TiffFile in(name, "r");
  Leaves leaves;
  in.setCallbackObject(&leaves);
  if (in.parse() != 0 || in.close() != 0)
  {
    in.perror(name);
    return 1;
  }

  in.open(name, "r");
  TdataReader reader;
  in.setCallbackObject(&reader);
  const bool equal = in.parse() == 0 && reader.values()[0] == tree;
  std::cout << (equal ? "The file holds " : "The file does not hold ") << tree << "\n";
  in.close();
  std::remove(name);
  return equal ? 0 : 1;
}
