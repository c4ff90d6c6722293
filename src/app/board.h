#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// Which board this is, and the pulses on its control registers that bring its peripherals up.
/// Called by main before start-up's threads exist.

inline constexpr std::size_t kBoardNameSize = 64;

/// Fills `out` (kBoardNameSize zeroed bytes) with the board's identifier from
/// /version/hardware_info. One that does not fit is cut when a known board's begins it; otherwise
/// `out` stays empty, as for a file without one. Returns 1, or 0 when the file cannot be opened or
/// read.
int readHdVersion(char* out);

/// The identifier that the hardware information `text` gives; nothing without the key or the quote
/// that closes the value. Pure, any thread.
std::optional<std::string_view> boardIdentifierIn(std::string_view text);

/// What bring-up needs of the board.
class BoardAccess {
 public:
    virtual ~BoardAccess() = default;
    virtual std::optional<std::uint32_t> readRegister(std::uint32_t address) = 0;
    virtual void writeRegister(std::uint32_t address, std::uint32_t value) = 0;
    virtual void runShell(const char* command) = 0;
    virtual void rest(std::int64_t microseconds) = 0;
};

/// The registers, the shell and the clock of this machine.
class RealBoardAccess : public BoardAccess {
 public:
    std::optional<std::uint32_t> readRegister(std::uint32_t address) override;
    void writeRegister(std::uint32_t address, std::uint32_t value) override;
    void runShell(const char* command) override;
    void rest(std::int64_t microseconds) override;
};

/// Runs the sequence of the board whose name `identifier` begins with, or the one for unknown
/// boards. Failures are passed over; a register that cannot be read is not changed either.
void bringUpBoard(std::string_view identifier, BoardAccess& access);
