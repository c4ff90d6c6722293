#pragma once

#include <cstdint>

/// The chip's 32-bit registers, one at a time, through the window /dev/mem (the path prefix
/// applies). With a prefix a sparse file serves as the window: it is created when missing and grows
/// as needed. Any thread.

/// The result of Hi_GetReg without a place for the value.
inline constexpr int kNullPointerError = static_cast<int>(0xA0028006U);

/// Writes `value` to the register at the physical `address`, a multiple of 4. Returns 0, or -1 when
/// the register cannot be mapped.
int Hi_SetReg(std::uint32_t address, std::uint32_t value);

/// Reads the register at the physical `address`, a multiple of 4, into `out`. Returns 0, -1 when
/// the register cannot be mapped (`out` stays as it is), kNullPointerError when `out` is null.
int Hi_GetReg(std::uint32_t address, std::uint32_t* out);
