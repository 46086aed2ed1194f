/// \file
/// TfootprintInfo: how much memory the objects of each name use.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <iosfwd>
#include <string>
#include <vector>

/// Memory by name, gathered from objects that report themselves, such as Tarray::sGetArrayFootprint().
///
/// \code
///   TfootprintInfo info;
///   Tarray::sGetArrayFootprint(&points, info, "points");
///   std::cout << info;
/// \endcode
class FOUNDATION_API TfootprintInfo
{
public:
  /// What the objects of one name have together, in bytes.
  struct Entry
  {
    std::string name;
    TuInt64 objects = 0;
    TuInt64 used = 0;
    TuInt64 allocated = 0;
  };

  /// Adds one object of \p allocated bytes, \p used of which hold something. A null \p name counts as "". Linear in
  /// the number of names.
  void add(const char* name, TuInt64 used, TuInt64 allocated);

  /// In the order in which the names came first.
  const std::vector<Entry>& entries() const noexcept { return fEntries; }

  /// The sums over all names.
  Entry total() const;

  void clear() noexcept { fEntries.clear(); }

private:
  std::vector<Entry> fEntries;
};

/// One line for each name and one for the total, with the figures in columns.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TfootprintInfo& info);
