# Warnings and sanitizers of the project's own build. Never installed, so a user of the package inherits none of it.
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

# For single sources: no limit to inlining that a loop of ours would reach.
set(KESTRA_INLINE_ALL -finline-limit=1000 --param=inline-unit-growth=1000 --param=large-function-growth=5000)
