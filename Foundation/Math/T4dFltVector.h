/// \file
/// T4dFltVector is defined beside T4dDblVector.

#pragma once

#include "Foundation/Math/T4dDblVector.h"
