/// \file
/// MPtrBase: what an object of the package's programming interface keeps of a value that it stands for.

#pragma once

/// A value that interface objects refer to. It stays as long as one does.
class MPtrBase
{
public:
  /// Take and give back a reference. The last one may delete the value.
  virtual void apiReference() = 0;
  virtual void apiUnreference() = 0;

protected:
  MPtrBase() = default;
  MPtrBase(const MPtrBase&) = default;
  MPtrBase& operator=(const MPtrBase&) = default;
  ~MPtrBase() = default;
};
