#pragma once

#include <string>
#include <vector>

/// What an emulated machine is made of: a USB keyboard `kbd0` and a USB mouse `mouse0` always.
struct EmulatorPlan {
    bool arm = false;      ///< a 32-bit ARM board; else a PC
    std::string kernel{};  ///< with initramfs: files of the host
    std::string initramfs{};
    std::string registers{};  ///< ARM: a file of makeRegisters() that lies at kRegisterBase
    std::string disk{};       ///< a directory that the machine sees as `disk` (9p); empty: none
    std::string flash{};      ///< PC: an image of ext4 that becomes /data; empty: a tmpfs does
    std::string writes{};     ///< with flash: every write to it and every flush, see flash_writes.h
};

/// Where the board has the registers that a start writes, in the machine's own memory.
constexpr long kRegisterBase = 0x10000000;

/// The emulator with its options, as Machine takes it.
std::vector<std::string> emulatorCommand(const EmulatorPlan& plan);

/// Makes the file `path` that stands for the registers, all 0. Throws std::runtime_error when it
/// cannot be written.
void makeRegisters(const std::string& path);
