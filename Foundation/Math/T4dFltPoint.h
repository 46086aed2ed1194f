/// \file
/// T4dFltPoint is defined beside T4dDblPoint.

#pragma once

#include "Foundation/Math/T4dDblPoint.h"
