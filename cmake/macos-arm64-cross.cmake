# Cross-configures the build for macOS on arm64 from Linux, for scripts/macos-compile-check:
# clang against a macOS SDK (BRISKO_MACOS_SDK), the dependencies' headers and package files from
# a folder that holds only them (BRISKO_MACOS_DEPS). Such a build makes static libraries and
# objects only: the SDK holds headers, no libraries to link against.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(CMAKE_OSX_SYSROOT "${BRISKO_MACOS_SDK}")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES BRISKO_MACOS_SDK BRISKO_MACOS_DEPS)

foreach(lang C CXX OBJCXX)
  set(CMAKE_${lang}_COMPILER_TARGET arm64-apple-macos14)
endforeach()
# Apple's C++ library, as Apple's own clang uses by default.
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
set(CMAKE_OBJCXX_FLAGS_INIT -stdlib=libc++)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_OBJCXX_COMPILER clang++)
find_program(CMAKE_AR NAMES llvm-ar llvm-ar-14 REQUIRED)
find_program(CMAKE_RANLIB NAMES llvm-ranlib llvm-ranlib-14 REQUIRED)
# CMake's Apple support insists on one; nothing here installs.
find_program(CMAKE_INSTALL_NAME_TOOL NAMES llvm-install-name-tool llvm-install-name-tool-14 REQUIRED)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_FIND_ROOT_PATH "${BRISKO_MACOS_DEPS}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${BRISKO_MACOS_DEPS}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
