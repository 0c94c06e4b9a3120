# 32-bit x86 on a 64-bit Debian: programs of -m32 with the libraries of the foreign architecture i386. The preset
# i386 uses it; `./test.sh --arch i386` installs and prepares what it needs first.
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)

# What is built runs here, whatever names the system besides (debian/rules).
set(CMAKE_CROSSCOMPILING FALSE)

# What scripts/i386_libraries.sh put there.
list(PREPEND CMAKE_LIBRARY_PATH "${CMAKE_BINARY_DIR}/libraries")

# The servers of the tests have 64 bits: their folder, and the library that a module of functions for them links.
set(ZMFB_SERVER_FOLDER /usr/lib/x86_64-linux-gnu/firebird/3.0 CACHE PATH "The folder of a server's plugins")
set(ZMFB_SERVER_UTIL_LIBRARY /usr/lib/x86_64-linux-gnu/libib_util.so CACHE FILEPATH "A server's utility library")
