/// \file
/// TdataMatrix: a matrix as a letter.

#pragma once

#include "Foundation/Data/TdataNumbers.h"
#include "Foundation/Math/T4dDblMatrix.h"

/// A 4x4 matrix, the identity at first. The product with another is that of matrices; matrices have no order and no
/// quotient.
class FOUNDATION_API TdataMatrix : public TdataValueOf<T4dDblMatrix, 16, TnumberType::kDouble>
{
public:
  using TdataValueOf::TdataValueOf;

  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  bool combine(ToperationOnData operation, const TdataLetter& other) override;
};
