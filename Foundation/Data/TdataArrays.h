/// \file
/// TdataDoubleArray, TdataInt32Array and TdataVectorArray: arrays as letters.

#pragma once

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Data/TdataNumbers.h"
#include "Foundation/Math/PointArrays.h"

class FOUNDATION_API TdataDoubleArray : public TdataArrayOf<TdoubleArray, 1, TnumberType::kDouble>
{
public:
  using TdataArrayOf::TdataArrayOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API TdataInt32Array : public TdataArrayOf<Tint32Array, 1, TnumberType::kInt32>
{
public:
  using TdataArrayOf::TdataArrayOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};

class FOUNDATION_API TdataVectorArray : public TdataArrayOf<T4dDblVectorArray, 3, TnumberType::kDouble>
{
public:
  using TdataArrayOf::TdataArrayOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;
};
