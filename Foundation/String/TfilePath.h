/// \file
/// TfilePath: the name of a file. TresId: the number of a resource.

#pragma once

#include "Foundation/Container/StringArrays.h"
#include "Foundation/Platform/Types.h"

#include <functional>
#include <ostream>
#include <utility>

/// A text that names a file, with '/' between its parts. Nothing asks whether there is such a file. Copies share the
/// text.
///
/// \code
///   const TfilePath path = TfilePath("scenes") / "arm.001.iff";
///   path.extension(); // "iff"
///   path.directory(); // "scenes"
/// \endcode
class TfilePath
{
public:
  TfilePath() noexcept = default;
  TfilePath(Tstring path) noexcept
    : fPath(std::move(path))
  {
  }
  TfilePath(const char* path) noexcept
    : fPath(path)
  {
  }

  const Tstring& asString() const noexcept { return fPath; }
  const char* asC() const noexcept { return fPath.asC(); }
  bool isEmpty() const noexcept { return fPath.empty(); }
  bool isAbsolute() const noexcept { return fPath[0] == '/'; }

  /// The last part and what is before it, as POSIX basename and dirname give them.
  Tstring name() const noexcept { return fPath.baseName(); }
  TfilePath directory() const noexcept { return fPath.directoryPath(); }

  /// What is behind the last '.' of the last part; "" without one.
  Tstring extension() const noexcept { return name().extension(); }

  /// \p part below this path. An absolute one takes the place of the path.
  TfilePath operator/(const TfilePath& part) const noexcept
  {
    if (isEmpty() || part.isAbsolute())
      return part;
    return fPath + (fPath[fPath.length() - 1] == '/' ? "" : "/") + part.fPath;
  }

  /// As texts; paths that lead to one file may differ.
  bool operator==(const TfilePath& other) const noexcept { return fPath == other.fPath; }
  bool operator!=(const TfilePath& other) const noexcept { return !(*this == other); }
  bool operator<(const TfilePath& other) const noexcept { return fPath < other.fPath; }

private:
  Tstring fPath;
};

inline std::ostream& operator<<(std::ostream& out, const TfilePath& path)
{
  return out << path.asString();
}

template <>
inline constexpr bool kMovesBitwise<TfilePath> = true; // as its string

/// Names a resource of the program by number; 0 names none.
class TresId
{
public:
  constexpr TresId() noexcept = default;
  constexpr explicit TresId(Tint32 number) noexcept
    : fNumber(number)
  {
  }

  constexpr Tint32 number() const noexcept { return fNumber; }
  constexpr bool isNone() const noexcept { return fNumber == 0; }

  constexpr bool operator==(const TresId& other) const noexcept { return fNumber == other.fNumber; }
  constexpr bool operator!=(const TresId& other) const noexcept { return fNumber != other.fNumber; }
  constexpr bool operator<(const TresId& other) const noexcept { return fNumber < other.fNumber; }

private:
  Tint32 fNumber = 0;
};

inline std::ostream& operator<<(std::ostream& out, const TresId& id)
{
  return out << id.number();
}

template <>
struct std::hash<TfilePath>
{
  std::size_t operator()(const TfilePath& path) const noexcept { return hash<Tstring>()(path.asString()); }
};

template <>
struct std::hash<TresId>
{
  std::size_t operator()(const TresId& id) const noexcept { return hash<Tint32>()(id.number()); }
};

// clang-format off
class TfilePathArray : public TtypedObjArray<TfilePath> { public: using TtypedArray::TtypedArray; };
class TresIdArray : public TtypedArray<TresId> { public: using TtypedArray::TtypedArray; };
// clang-format on
