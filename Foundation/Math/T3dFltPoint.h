/// \file
/// T3dFltPoint is defined beside T3dDblPoint.

#pragma once

#include "Foundation/Math/T3dDblPoint.h"
