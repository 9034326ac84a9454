# Warnings are errors on our own code; sanitizers come from the preset.
add_library(roster_compiler INTERFACE)
target_compile_options(roster_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

if(ROSTER_SANITIZE)
    add_compile_options(-fsanitize=${ROSTER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ROSTER_SANITIZE})
    # gcc 12 loses track of initialisation in code that ThreadSanitizer instruments, and warns where nothing is wrong.
    if(ROSTER_SANITIZE STREQUAL "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(roster_compiler INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

# Nobody puts functions of their own in the place of ours: calls between those are direct, and may be inlined.
add_compile_options($<$<NOT:$<CONFIG:Debug>>:-fno-semantic-interposition>)
add_link_options($<$<NOT:$<CONFIG:Debug>>:LINKER:-Bsymbolic-functions>)

find_program(MOLD mold)
if(MOLD)
    add_link_options(-fuse-ld=mold)
endif()
