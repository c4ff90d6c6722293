// Offsets above 2 GiB, on a 32-bit board too.
#ifndef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64  // NOLINT(bugprone-reserved-identifier)
#endif

#include "app/registers.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "base/path_prefix.h"

namespace {

static_assert(sizeof(off_t) == 8);

constexpr const char* kWindow = "/dev/mem";
constexpr std::size_t kRegisterSize = sizeof(std::uint32_t);

int openWindow() {
    const std::string path = prefixedPath(kWindow);
    constexpr int kFlags = O_RDWR | O_SYNC | O_CLOEXEC;
    if (!hasPathPrefix()) {
        return open(path.c_str(), kFlags);
    }
    mkdir(prefixedPath("/dev").c_str(), 0755);
    return open(path.c_str(), kFlags | O_CREAT, 0600);
}

/// True when the register is there to be touched: memory behind the end of a regular file, or in a
/// hole that a full disk cannot fill, would raise SIGBUS.
bool isBacked(int fd, off_t address) {
    struct stat info {};
    if (fstat(fd, &info) != 0) {
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        return true;
    }
    return hasPathPrefix() ? posix_fallocate(fd, address, kRegisterSize) == 0
                           : info.st_size >= address + static_cast<off_t>(kRegisterSize);
}

/// Maps the page of the register, runs `use` on the register and returns munmap's result.
template <class Use>
int withRegister(std::uint32_t address, Use use) {
    if (address % kRegisterSize != 0) {
        return -1;
    }
    const int fd = openWindow();
    if (fd < 0) {
        return -1;
    }
    const std::uint32_t inPage = address % static_cast<std::uint32_t>(sysconf(_SC_PAGESIZE));
    void* page = MAP_FAILED;
    if (isBacked(fd, static_cast<off_t>(address))) {
        page = mmap(nullptr, inPage + kRegisterSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd,
                    static_cast<off_t>(address - inPage));
    }
    close(fd);
    if (page == MAP_FAILED) {
        return -1;
    }
    use(*reinterpret_cast<volatile std::uint32_t*>(static_cast<char*>(page) + inPage));
    return munmap(page, inPage + kRegisterSize);
}

}  // namespace

int Hi_SetReg(std::uint32_t address, std::uint32_t value) {
    return withRegister(address, [value](volatile std::uint32_t& reg) { reg = value; });
}

int Hi_GetReg(std::uint32_t address, std::uint32_t* out) {
    if (out == nullptr) {
        return kNullPointerError;
    }
    return withRegister(address, [out](volatile std::uint32_t& reg) { *out = reg; });
}
