/// \file
/// Tpoint and OSpoint are defined beside TdblPoint.

#pragma once

#include "Foundation/Math/TdblPoint.h"
