# Compiles and links Orvo for macOS on a machine without its SDK: Zig brings a compiler, a linker and the
# headers of the C and C++ libraries; our own declarations, and the linker stubs made from them, stand for
# the frameworks. What comes out runs on a Mac alone. scripts/setup installs the tools.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_INSTALL_NAME_TOOL true)

set(tools ${CMAKE_CURRENT_LIST_DIR}/bin)
set(CMAKE_C_COMPILER ${tools}/zig-cc)
set(CMAKE_CXX_COMPILER ${tools}/zig-c++)
set(CMAKE_OBJCXX_COMPILER ${tools}/zig-c++)
set(CMAKE_AR ${tools}/zig-ar)
set(CMAKE_RANLIB ${tools}/zig-ranlib)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ORVO_MACOS_MINIMUM)
# Zig would instrument everything for undefined behaviour.
set(flags "-target aarch64-macos.${ORVO_MACOS_MINIMUM} -fno-sanitize=undefined -isystem ${CMAKE_CURRENT_LIST_DIR}/declarations")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")
# CMake says twice that the language is Objective-C++.
set(CMAKE_OBJCXX_FLAGS_INIT "${flags} -Wno-unused-command-line-argument")

# Of Debian's libraries only those that are headers alone can serve; its folders would bring the headers
# of its C library as well.
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE NEVER)
