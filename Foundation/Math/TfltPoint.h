/// \file
/// TfltPoint is defined beside TdblPoint.

#pragma once

#include "Foundation/Math/TdblPoint.h"
