# Toolchain of the native 32-bit builds: the machine's own compiler with -m32 (package g++-multilib).
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
