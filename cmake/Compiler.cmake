# Warnings are errors on our own code; sanitizers come from the preset.
add_library(roster_compiler INTERFACE)
target_compile_options(roster_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

if(ROSTER_SANITIZE)
    add_compile_options(-fsanitize=${ROSTER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${ROSTER_SANITIZE})
endif()

find_program(MOLD mold)
if(MOLD)
    add_link_options(-fuse-ld=mold)
endif()
