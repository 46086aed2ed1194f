/// \file
/// CMapStringToRes and CMapStringToMap: which resource a name stands for, and in which group of names.
///
/// A module describes its resources by names and a program looks them up, so that a name can be given another resource.
/// Cost and traps are those of TstringKeyTable.

#pragma once

#include "Foundation/String/StringTables.h"
#include "Foundation/String/TfilePath.h"

/// A resource: its number, and the module that it is in; "" is the program.
class CMappedRes
{
public:
  CMappedRes() noexcept = default;
  CMappedRes(TresId id, Tstring module = Tstring()) noexcept
    : fModule(std::move(module))
    , fId(id)
  {
  }

  TresId id() const noexcept { return fId; }
  const Tstring& module() const noexcept { return fModule; }

  bool operator==(const CMappedRes& other) const noexcept { return fId == other.fId && fModule == other.fModule; }
  bool operator!=(const CMappedRes& other) const noexcept { return !(*this == other); }

private:
  Tstring fModule;
  TresId fId;
};

/// "MODULE:ID".
inline std::ostream& operator<<(std::ostream& out, const CMappedRes& resource)
{
  return out << resource.module() << ':' << resource.id();
}

template <>
struct std::hash<CMappedRes>
{
  std::size_t operator()(const CMappedRes& resource) const noexcept
  {
    return hash<Tstring>()(resource.module()) * 31 + hash<TresId>()(resource.id());
  }
};

/// Resources by name: insertReplace() gives a name its resource, find() has it.
class CMapStringToRes : public TstringKeyTable<CMappedRes>
{
public:
  using TstringKeyTable::TstringKeyTable;
};

/// Groups of resources by name. A group stays in its place until it is removed.
///
/// \code
///   CMapStringToMap resources;
///   resources.findOrInsert("icons").insertReplace("lamp", CMappedRes(TresId(204), "lights"));
///   if (const CMappedRes* icon = resources.find("icons", "lamp"))
///     std::cout << icon->module() << ' ' << icon->id() << '\n';
/// \endcode
class CMapStringToMap : public TstringKeyTable<CMapStringToRes>
{
public:
  using TstringKeyTable::find;
  using TstringKeyTable::TstringKeyTable;

  /// The resource that \p name stands for in \p group; null when there is none.
  const CMappedRes* find(const Tstring& group, const Tstring& name) const noexcept
  {
    const CMapStringToRes* map = find(group);
    return map ? map->find(name) : nullptr;
  }
};
