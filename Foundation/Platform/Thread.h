/// \file
/// What the platform knows about threads. Internal to the library.

#pragma once

namespace Platform {

/// Has \p end called when the calling thread ends, after the destructors of its variables; it must be the same function
/// in all calls. False when that is not to be had: without memory, and on Windows. The main thread ends without it.
bool callAtThreadEnd(void (*end)()) noexcept;

} // namespace Platform
