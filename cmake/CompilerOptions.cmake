# One interface target that every target of ours links: warnings are errors, but not those of another project's
# compiler; sanitizers on request.
add_library(zmfb_warnings INTERFACE)
target_compile_options(zmfb_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion)
if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(zmfb_warnings INTERFACE -Werror)
endif()
# g++ 12 finds overlaps in std::string's assignment of a literal that are not there, and overruns when it optimises.
target_compile_options(zmfb_warnings INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
    "$<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-stringop-overflow;-Wno-array-bounds>")

# On 32-bit x86 the compiler's default arithmetic holds more digits than a double has until a value is stored, and
# rounds twice then. This way numbers come out as they do on 64 bits.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "86")
    add_compile_options(-msse2 -mfpmath=sse)
endif()

# File positions of 64 bits on 32-bit machines; the locks of open files exist only with these.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_compile_definitions(_FILE_OFFSET_BITS=64)
endif()

# The product's own code; tests/ takes it back for the code of the tests.
if(ZMFB_COVERAGE)
    set(zmfb_coverage_options --coverage -O0 -fprofile-update=atomic)
    add_compile_options(${zmfb_coverage_options})
    add_link_options(--coverage)
    # A process that leaves by _exit hands over what it counted first.
    add_library(zmfb_counted_exit OBJECT "${CMAKE_CURRENT_LIST_DIR}/counted_exit.c")
    add_link_options(LINKER:--wrap=_exit)
    link_libraries("$<BUILD_INTERFACE:zmfb_counted_exit>")
endif()

if(ZMFB_SANITIZE)
    add_compile_options(-fsanitize=${ZMFB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ZMFB_SANITIZE})
endif()
