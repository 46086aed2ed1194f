#include "Foundation/Data/TdataColor.h"

#include "Foundation/Data/Letters.h"

LETTER(TdataReflectance, "reflectanceRGB", "RRGB", 44, TdataLetter);
LETTER(TdataSpectrum, "spectrumRGB", "SRGB", 44, TdataLetter);
