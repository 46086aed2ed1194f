/// \file
/// T4dFltMatrix is defined beside T4dDblMatrix.

#pragma once

#include "Foundation/Math/T4dDblMatrix.h"
