/// \file
/// TfltTuple is defined beside Ttuple.

#pragma once

#include "Foundation/Math/Ttuple.h"
