/// \file
/// TblindData and its kinds: values that are attached to an object by number and that the library does not interpret.
///
/// Use them to carry data of a plug-in or a file along with an object of somebody else's: whoever attaches a value
/// picks its id, and asks it for its kind with typeof() or cast().

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/String/Tstring.h"

#include <iosfwd>
#include <utility>

class Tmetaclass;

/// A value with an id.
///
/// \code
///   TblindDoubleData weight(2.5, kWeightId);
///   std::unique_ptr<TblindData> copy(weight.copy());
///   auto* same = static_cast<TblindDoubleData*>(copy->cast(TblindDoubleData::fTypeid)); // null for another kind
///   same->setValue(3);
///   *copy == weight; // false
/// \endcode
class FOUNDATION_API TblindData
{
public:
  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);
  virtual ~TblindData() = default;

  Tint32 id() const noexcept { return fId; }
  void setId(Tint32 id) noexcept { fId = id; }

  /// A new object of the same kind, id and value, the caller's. Throws TmemoryException.
  virtual TblindData* copy() const = 0;

  /// Whether kind, id and value are equal.
  friend bool operator==(const TblindData& left, const TblindData& right)
  {
    return left.fId == right.fId && left.typeof() == right.typeof()&& left.equals(right);
  }
  friend bool operator!=(const TblindData& left, const TblindData& right) { return !(left == right); }

  /// Kind, id and value, as "TblindInt32Data 7: 42".
  friend FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TblindData& data);

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  explicit TblindData(Tint32 id) noexcept
    : fId(id)
  {
  }
  TblindData(const TblindData&) = default;
  TblindData& operator=(const TblindData&) = default;

private:
  virtual bool equals(const TblindData& other) const = 0; // of the same kind
  virtual void print(std::ostream& out) const = 0;

  Tint32 fId;
};

/// What the kinds have in common: a value of type \p Value.
template <class Value>
class TblindDataOf : public TblindData
{
public:
  explicit TblindDataOf(Value value = Value(), Tint32 id = 0) noexcept
    : TblindData(id)
    , fValue(std::move(value))
  {
  }

  const Value& value() const noexcept { return fValue; }
  void setValue(Value value) noexcept { fValue = std::move(value); }

private:
  bool equals(const TblindData& other) const override
  {
    return fValue == static_cast<const TblindDataOf&>(other).fValue;
  }

  Value fValue;
};

/// A truth value.
class FOUNDATION_API TblindBooleanData : public TblindDataOf<bool>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  TblindData* copy() const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override;
};

/// A whole number.
class FOUNDATION_API TblindInt32Data : public TblindDataOf<Tint32>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  TblindData* copy() const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override;
};

/// An address; what is there stays its owner's.
class FOUNDATION_API TblindPointerData : public TblindDataOf<void*>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  TblindData* copy() const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override;
};

/// A text; copies share it.
class FOUNDATION_API TblindStringData : public TblindDataOf<Tstring>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  TblindData* copy() const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override;
};

/// A number. One that is not equal to itself makes no two equal.
class FOUNDATION_API TblindDoubleData : public TblindDataOf<double>
{
public:
  using TblindDataOf::TblindDataOf;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  TblindData* copy() const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

private:
  void print(std::ostream& out) const override;
};
