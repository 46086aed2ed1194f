#include "Foundation/Data/TdataArrays.h"

#include "Foundation/Data/Letters.h"

LETTER(TdataDoubleArray, "doubleArray", "DBL#", 44, TdataLetter);
LETTER(TdataInt32Array, "Int32Array", "I32#", 44, TdataLetter);
LETTER(TdataVectorArray, "vectorArray", "VEC#", 44, TdataLetter);
