/// \file
/// TiffParserCallback: receives what TiffFile::parse finds in a chunk file.
///
/// Derive from it, override the methods of set 1 and give the receiver to a file. One receiver can hold three parsers:
/// the sets 2 and 3 are further ones, and setMethodsToUse() switches between them, during a walk too. An event costs
/// two calls. The trap: the set in use is 0 at first, and then nothing is called.

#pragma once

#include "Foundation/Iff/TiffTag.h"

class TiffFile;

/// A receiver of events.
///
/// \code
///   class Names : public TiffParserCallback
///   {
///   public:
///     Names() { setMethodsToUse(1); }
///     int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size) override
///     {
///       if (id == TiffTag::kNAME) fNames.push_back(…);   // read with file.get(), or leave it to be skipped
///       return 0;
///     }
///   };
/// \endcode
///
/// The methods get a list or concatenation, a form or property group, a plain chunk. What they answer, and what they
/// may do to the file, TiffFile::parse tells. As long as they are not overridden they answer 0.
class FOUNDATION_API TiffParserCallback
{
public:
  virtual int iffVListMethod1(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVFormMethod1(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVLeafMethod1(TiffFile& file, TiffTag id, Tint32 size);
  virtual int iffVListMethod2(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVFormMethod2(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVLeafMethod2(TiffFile& file, TiffTag id, Tint32 size);
  virtual int iffVListMethod3(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVFormMethod3(TiffFile& file, TiffTag group, TiffTag type);
  virtual int iffVLeafMethod3(TiffFile& file, TiffTag id, Tint32 size);
  virtual ~TiffParserCallback(); // behind the others, whose places in the table of virtual functions stay

  /// Which set is called: 1, 2 or 3; with any other number events are answered with 0 and nothing is called.
  void setMethodsToUse(int set) noexcept { fMethods = set; }
  int methodsToUse() const noexcept { return fMethods; }

  /// Call the method of the set in use.
  int iffListMethod(TiffFile& file, TiffTag group, TiffTag type)
  {
    switch (fMethods)
    {
    case 1: return iffVListMethod1(file, group, type);
    case 2: return iffVListMethod2(file, group, type);
    case 3: return iffVListMethod3(file, group, type);
    default: return 0;
    }
  }
  int iffFormMethod(TiffFile& file, TiffTag group, TiffTag type)
  {
    switch (fMethods)
    {
    case 1: return iffVFormMethod1(file, group, type);
    case 2: return iffVFormMethod2(file, group, type);
    case 3: return iffVFormMethod3(file, group, type);
    default: return 0;
    }
  }
  int iffLeafMethod(TiffFile& file, TiffTag id, Tint32 size)
  {
    switch (fMethods)
    {
    case 1: return iffVLeafMethod1(file, id, size);
    case 2: return iffVLeafMethod2(file, id, size);
    case 3: return iffVLeafMethod3(file, id, size);
    default: return 0;
    }
  }

private:
  int fMethods = 0;
};
