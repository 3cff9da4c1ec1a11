# Clang 19 and libc++ for 64-bit ARM, run under qemu: as near to a device as a workstation comes.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(lsc_sysroot ${CMAKE_CURRENT_LIST_DIR}/../build/arm64-sysroot)
cmake_path(NORMAL_PATH lsc_sysroot)
set(CMAKE_SYSROOT ${lsc_sysroot})
foreach(language C CXX)  # C for GoogleTest's own project
  set(CMAKE_${language}_COMPILER_TARGET aarch64-linux-gnu)
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)

# The driver looks for libc++ beside itself; the one of the target lies in the sysroot.
set(lsc_llvm ${lsc_sysroot}/usr/lib/llvm-19)
set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc++ -isystem ${lsc_llvm}/include/c++/v1 -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS")
set(lsc_link "-stdlib=libc++ -fuse-ld=lld-19 -L${lsc_llvm}/lib -Wl,-rpath,/usr/lib/llvm-19/lib")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${lsc_link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${lsc_link}")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L ${lsc_sysroot})
