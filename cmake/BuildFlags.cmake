# Warnings and sanitizers of the project's own build. Never installed, so a user of the package
# inherits none of it.
add_library(kestra-build-flags INTERFACE)
target_compile_options(kestra-build-flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

if(KESTRA_SANITIZE)
    target_compile_options(kestra-build-flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kestra-build-flags INTERFACE -fsanitize=address,undefined)
    target_compile_definitions(kestra-build-flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(KESTRA_HARDEN)
    target_compile_options(kestra-build-flags INTERFACE -fstack-protector-strong)
    target_compile_definitions(kestra-build-flags INTERFACE _GLIBCXX_ASSERTIONS _FORTIFY_SOURCE=2)
    target_link_options(kestra-build-flags INTERFACE -fstack-protector-strong)
endif()

# Optimization across files does its work at each link. Most test programs go without and are linked
# in a moment, when the objects that they share with the others are compiled for both.
set(KESTRA_FAT_OBJECTS OFF)
if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND KESTRA_BUILD_TESTS AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(KESTRA_FAT_OBJECTS ON)
endif()
function(kestra_fat_objects name)
    if(KESTRA_FAT_OBJECTS)
        target_compile_options(${name} PRIVATE -ffat-lto-objects)
    endif()
endfunction()

# For single sources: no limit to inlining that a loop of ours would reach.
set(KESTRA_INLINE_ALL -finline-limit=1000 --param=inline-unit-growth=1000 --param=large-function-growth=5000)
