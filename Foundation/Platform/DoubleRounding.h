/// \file
/// DoubleRounding: where the processor computes in 80 bits, lets it round to double. Internal to the library.

#pragma once

namespace Platform {

/// While one lives, each operation of the 80-bit unit is rounded once, to the 53 bits of a double. The runtime of
/// 32-bit platforms computes there, whatever we are compiled for, and its reading of numbers is wrong in the last bit
/// when a product is rounded to 64 bits first. Nothing elsewhere.
class DoubleRounding
{
#ifdef __i386__
public:
  DoubleRounding() noexcept
  {
    asm volatile("fnstcw %0" : "=m"(fBefore));
    load(static_cast<unsigned short>((fBefore & ~kPrecision) | kDouble));
  }
  ~DoubleRounding()
  {
    load(fBefore);
  }
  DoubleRounding(const DoubleRounding&) = delete;
  DoubleRounding& operator=(const DoubleRounding&) = delete;

private:
  static constexpr int kPrecision = 0x300; // the field of the control word
  static constexpr int kDouble = 0x200;

  static void load(unsigned short word) noexcept
  {
    asm volatile("fldcw %0" : : "m"(word) : "memory");
  }

  unsigned short fBefore;
#endif
};

} // namespace Platform
