#include "Foundation/Data/TdataMatrix.h"

#include "Foundation/Data/Letters.h"

LETTER(TdataMatrix, "matrix", "MATR", 40, TdataLetter);

bool TdataMatrix::combine(ToperationOnData operation, const TdataLetter& other)
{
  if (operation == ToperationOnData::kAdd || operation == ToperationOnData::kSubtract)
    return TdataNumbers::combine(operation, other);
  if (operation == ToperationOnData::kDivide || other.typeof() != typeof())
    return false;
  value() *= static_cast<const TdataMatrix&>(other).value();
  return true;
}
