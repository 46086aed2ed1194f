/// \file
/// TpreferenceItem: one setting of the user's, by name.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/String/Tstring.h"

#include <iosfwd>
#include <utility>

class Tmetaclass;

/// A name, the text that is set for it, and the text that holds until something is set.
///
/// \code
///   TpreferenceItem snap("grid.snap", "on");
///   snap.setValue("off");
///   if (snap.isChanged() && file.put(snap.name() + " " + snap.value() + "\n"))
///     snap.setUnchanged();
/// \endcode
class FOUNDATION_API TpreferenceItem
{
public:
  /// With its default for a value, and unchanged.
  explicit TpreferenceItem(Tstring name = Tstring(), Tstring defaultValue = Tstring()) noexcept
    : fName(std::move(name))
    , fValue(defaultValue)
    , fDefault(std::move(defaultValue))
  {
  }

  TpreferenceItem(const TpreferenceItem&) = default;
  TpreferenceItem& operator=(const TpreferenceItem&) = default;

  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);
  virtual ~TpreferenceItem() = default;

  const Tstring& name() const noexcept { return fName; }
  const Tstring& value() const noexcept { return fValue; }
  const Tstring& defaultValue() const noexcept { return fDefault; }
  bool isDefault() const noexcept { return fValue == fDefault; }

  /// Marks the item as changed unless it has that value already.
  void setValue(const Tstring& value) noexcept
  {
    fIsChanged |= fValue != value;
    fValue = value;
  }
  void reset() noexcept { setValue(fDefault); }

  /// Whether it has been given another value since it was made, or since it was last declared unchanged: when it was
  /// read or saved.
  bool isChanged() const noexcept { return fIsChanged; }
  void setUnchanged() noexcept { fIsChanged = false; }

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  Tstring fName;
  Tstring fValue;
  Tstring fDefault;
  bool fIsChanged = false;
};

/// "NAME = VALUE", with " (changed)" behind it when it is.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TpreferenceItem& item);
