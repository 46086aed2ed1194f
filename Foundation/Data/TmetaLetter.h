/// \file
/// TmetaLetter: makes a kind of letter known by its name and chunk tag, and finds and makes letters by these.
///
/// Declare a static one behind the record of each kind; ask the static functions. A look-up is one in a hash table.

#pragma once

#include "Foundation/Iff/TiffTag.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/String/Tstring.h"

class TdataLetter;
class Tmetaclass;

/// The entry of one kind.
///
/// \code
///   static TmetaLetter letter(&record);                       // in the kind's source, or in a plug-in's
///   Tdata value(TmetaLetter::construct(TiffTag("MATR")));     // in a reader
/// \endcode
class FOUNDATION_API TmetaLetter
{
public:
  /// Enters the kind under the name and the tag of its record, which must outlive this. Where there is a kind under
  /// either already, that one stays. Throws TmemoryException with nothing entered.
  explicit TmetaLetter(Tmetaclass* type);

  TmetaLetter(const TmetaLetter&) = delete;
  TmetaLetter& operator=(const TmetaLetter&) = delete;

  /// Takes out what it entered itself.
  virtual ~TmetaLetter();

  const char* name() const;
  TiffTag iffTag() const;
  Tmetaclass* typeId() const noexcept { return fType; }

  /// A new letter of the kind, the caller's; null when there is no memory.
  TdataLetter* createDataLetter() const;

  /// The record of the kind with that name or tag; null without one. By name it may throw TmemoryException.
  static Tmetaclass* findTypeid(const char* name);
  static Tmetaclass* findTypeid(const TiffTag& tag);

  /// A new letter of that kind, the caller's; a TdataUnknown when there is no such kind, null when there is no memory.
  static TdataLetter* construct(const TiffTag& tag);
  static TdataLetter* construct(const char* name);

private:
  void removeEntries() noexcept;

  Tmetaclass* fType;
  Tstring fEntered;      // the name, unless somebody entered it before
  bool fOwnsTag = false; // whether this entered it, not somebody before
};
