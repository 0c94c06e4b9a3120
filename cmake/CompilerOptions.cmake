# One interface target that every target of ours links: warnings are errors, sanitizers on request.
add_library(zmfb_warnings INTERFACE)
target_compile_options(zmfb_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Werror)
# g++ 12 finds overlaps in std::string's assignment of a literal that are not there.
target_compile_options(zmfb_warnings INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)

if(ZMFB_SANITIZE)
    add_compile_options(-fsanitize=${ZMFB_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ZMFB_SANITIZE})
endif()
