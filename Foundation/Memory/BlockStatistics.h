/// \file
/// The lines of the process allocator's statistics, before they are put together. Internal to the library.

#pragma once

#include <functional>

/// Calls \p take for each line with its amount, "%8.3f Mb\t", and its name, which a line end follows. Allocates
/// nothing. Blocks may be taken and released meanwhile.
void forEachStatistic(const std::function<void(const char* amount, const char* name)>& take);
