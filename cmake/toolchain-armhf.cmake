# Cross-builds db for the recorder's ARM target (32-bit, hard float) with
# Debian's cross compiler and the armhf libraries installed through multiarch
# (dpkg --add-architecture armhf; tools/install-deps does it):
#
#   cmake -B build-armhf --toolchain cmake/toolchain-armhf.cmake
#
# Programs built here run on the host under qemu-arm, which CMake and ctest
# put in front of them as the cross-compiling emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(DB_TARGET_TRIPLET arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${DB_TARGET_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${DB_TARGET_TRIPLET}-g++)

# Metadata files on the recorder's disk can pass 2 GiB: 64-bit file offsets
# let stat() report their size (which the tool then cuts to 32 bits) instead
# of failing with EOVERFLOW, exactly as on a 64-bit host. A 64-bit time_t
# likewise shows a stored unsigned time past 2038 (up to 4294967295, in 2106)
# as the date it is, not as a date before 1970, and the target's tables are
# then the host's byte for byte; none of the libraries the tool links passes
# a time_t across its interface. -Wno-psabi quiets the notes on an ARM calling
# convention change of GCC 7.1, which matters only when linking with code
# built by an older compiler.
set(DB_TARGET_FLAGS "-D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64 -Wno-psabi")
set(CMAKE_C_FLAGS_INIT "${DB_TARGET_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${DB_TARGET_FLAGS}")

# Multiarch: the armhf libraries live in /usr/lib/arm-linux-gnueabihf, their
# headers in /usr/include; the cross compiler's own runtime in
# /usr/arm-linux-gnueabihf. Naming the library architecture makes find_library
# and find_package look in the armhf folders and never in the host's.
set(CMAKE_LIBRARY_ARCHITECTURE ${DB_TARGET_TRIPLET})
set(CMAKE_FIND_ROOT_PATH /usr/${DB_TARGET_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# The armhf development link of SQLite comes with libsqlite3-dev:armhf, which
# drags in libc6-dev:armhf; when the archive's armhf and host versions of the
# kernel headers disagree that one cannot be installed. The runtime library
# libsqlite3-0:armhf and the host's sqlite3.h (the same on every
# architecture) are then all the build needs.
set(DB_ARMHF_LIBDIR /usr/lib/${DB_TARGET_TRIPLET})
if(NOT EXISTS ${DB_ARMHF_LIBDIR}/libsqlite3.so AND EXISTS ${DB_ARMHF_LIBDIR}/libsqlite3.so.0)
  set(SQLite3_LIBRARY ${DB_ARMHF_LIBDIR}/libsqlite3.so.0 CACHE FILEPATH "SQLite library (armhf)")
endif()

# qemu-arm runs the armhf programs of the build (test discovery, ctest). The
# multiarch C library (libc6:armhf, which the armhf libraries depend on) puts
# the target's dynamic loader at /lib/ld-linux-armhf.so.3, where qemu-arm finds
# it and which finds every armhf library through the host's loader cache. The
# cross compiler's own copy under /usr/arm-linux-gnueabihf (qemu-arm -L) is
# the fallback only: its loader reads that same cache, which also lists the
# host's 32-bit x86 libraries, and can pick those.
find_program(DB_QEMU_ARM qemu-arm)
if(DB_QEMU_ARM)
  if(EXISTS /lib/ld-linux-armhf.so.3)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${DB_QEMU_ARM})
  else()
    set(CMAKE_CROSSCOMPILING_EMULATOR ${DB_QEMU_ARM} -L /usr/${DB_TARGET_TRIPLET})
  endif()
endif()
