# Cross-builds for 64-bit ARM Linux on a Debian machine with multiarch arm64 packages:
#   dpkg --add-architecture arm64 && apt-get install g++-aarch64-linux-gnu qemu-user \
#       qtbase5-dev:arm64 liblog4cplus-dev:arm64 libsystemd-dev:arm64   (qt6-base-dev:arm64 for Qt 6)
#   cmake -S . -B build/arm64 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/aarch64-linux-gnu.cmake
# ctest runs the tests under qemu-aarch64. Tests that start further programs need the kernel to
# run arm64 executables: register qemu with binfmt_misc (Debian's qemu-user-binfmt).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)

# Libraries and packages of the target architecture only; programs (moc, lrelease) of the host.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
