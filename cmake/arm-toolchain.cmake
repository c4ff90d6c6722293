# The board: 32-bit ARM, Cortex-A9 class, hard float. Debian's cross compiler g++-arm-linux-gnueabihf.
# Programs are static, because the board's own libraries are old and unknown, and hold no unused code.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(CMAKE_CXX_FLAGS_INIT
    "-mcpu=cortex-a9 -mfpu=neon -mfloat-abi=hard -mthumb -Wno-psabi -ffunction-sections \
-fdata-sections -D_FILE_OFFSET_BITS=64")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--gc-sections -Wl,-s")

# Libraries of the build machine are of no use here; headers alone (Boost, CLI11) are.
set(CMAKE_FIND_ROOT_PATH /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)

# With it, tests built for the board run on the build machine.
find_program(TAVRIK_QEMU_ARM NAMES qemu-arm-static qemu-arm)
if(TAVRIK_QEMU_ARM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${TAVRIK_QEMU_ARM})
endif()
