/// \file
/// T4dFltMatrixStack is defined beside T4dDblMatrixStack.

#pragma once

#include "Foundation/Math/T4dDblMatrixStack.h"
