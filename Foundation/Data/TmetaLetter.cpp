#include "Foundation/Data/TmetaLetter.h"

#include "Foundation/Data/TdataUnknown.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Data/Typed.h"
#include "Foundation/Iff/TiffTable.h"
#include "Foundation/String/StringTables.h"

namespace {

struct Letters
{
  TiffTable fByTag;
  TnameTable fByName;
};

// Made by the first letter, and never destroyed.
Letters*& letters() noexcept
{
  static Letters* letters;
  return letters;
}

// Throws TmemoryException where the string would be empty instead.
Tstring stringOf(const char* name)
{
  Tstring string(name);
  if (string.empty() && *name)
    throw TmemoryException();
  return string;
}

TdataLetter* constructLetter(Tmetaclass* type)
{
  return TdataLetter::construct(type ? type : TdataUnknown::fTypeid);
}

} // namespace

TmetaLetter::TmetaLetter(Tmetaclass* type)
  : fType(type)
{
  if (!letters())
    letters() = makeNew<Letters>();
  const Tstring key = stringOf(name());
  if (!key.empty() && letters()->fByName.insertUnique(key, type))
    fEntered = key;
  try
  {
    fOwnsTag = letters()->fByTag.insertUnique(iffTag(), type);
  }
  catch (const TmemoryException&)
  {
    removeEntries();
    throw;
  }
}

TmetaLetter::~TmetaLetter()
{
  removeEntries();
}

void TmetaLetter::removeEntries() noexcept
{
  if (!fEntered.empty())
    letters()->fByName.remove(fEntered);
  if (fOwnsTag)
    letters()->fByTag.remove(iffTag());
}

const char* TmetaLetter::name() const
{
  return fType->name();
}

TiffTag TmetaLetter::iffTag() const
{
  return fType->tag();
}

TdataLetter* TmetaLetter::createDataLetter() const
{
  return TdataLetter::construct(fType);
}

Tmetaclass* TmetaLetter::findTypeid(const char* name)
{
  Tmetaclass* type = nullptr;
  if (name && *name && letters())
    letters()->fByName.find(stringOf(name), type);
  return type;
}

Tmetaclass* TmetaLetter::findTypeid(const TiffTag& tag)
{
  Tmetaclass* type = nullptr;
  if (letters())
    letters()->fByTag.find(tag, type);
  return type;
}

TdataLetter* TmetaLetter::construct(const TiffTag& tag)
{
  return constructLetter(findTypeid(tag));
}

TdataLetter* TmetaLetter::construct(const char* name)
{
  try
  {
    return constructLetter(findTypeid(name));
  }
  catch (const TmemoryException&)
  {
    return nullptr;
  }
}
