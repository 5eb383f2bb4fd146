# Warnings and sanitizers of the project's own build. Never installed, so a user of the package
# inherits none of it; nor does a project that has this one within.
if(NOT KESTRA_LIBRARY_ALONE)
    add_library(kestra-build-flags INTERFACE)
    target_compile_options(kestra-build-flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(KESTRA_WERROR)
        target_compile_options(kestra-build-flags INTERFACE -Werror)
    endif()
endif()

if(KESTRA_SANITIZE AND NOT KESTRA_LIBRARY_ALONE)
    target_compile_options(kestra-build-flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kestra-build-flags INTERFACE -fsanitize=address,undefined)
    target_compile_definitions(kestra-build-flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(KESTRA_HARDEN AND NOT KESTRA_LIBRARY_ALONE)
    target_compile_options(kestra-build-flags INTERFACE -fstack-protector-strong)
    target_compile_definitions(kestra-build-flags INTERFACE _GLIBCXX_ASSERTIONS _FORTIFY_SOURCE=2)
    target_link_options(kestra-build-flags INTERFACE -fstack-protector-strong)
endif()

# Makes the library as fast where the flags come from outside, as those of a distribution do, as in
# the preset of a release: `kestra_optimize` compiles a target by -O3, `KESTRA_INLINE_ALL` is for
# single sources and sets no limit to inlining that a loop of ours would reach, and optimization
# across files is on where nobody has said otherwise. Only where the last -O that the compiler gets
# is -O2 or -O3: nobody who asks for less is given more.
set(KESTRA_INLINE_ALL)
set(KESTRA_OPTIMIZE)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT KESTRA_SANITIZE AND NOT KESTRA_HARDEN)
    set(configurations ${CMAKE_BUILD_TYPE})
    if(CMAKE_CONFIGURATION_TYPES)
        set(configurations ${CMAKE_CONFIGURATION_TYPES})
    elseif(NOT configurations)
        set(configurations None)
    endif()
    foreach(configuration IN LISTS configurations)
        string(TOUPPER ${configuration} upper)
        string(REGEX MATCHALL "(^| )-O[^ ]*" levels "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${upper}}")
        list(POP_BACK levels level)
        if(level MATCHES "-O[23]$")
            set(is_configured 1)
            if(CMAKE_CONFIGURATION_TYPES)
                set(is_configured "$<CONFIG:${configuration}>")
            endif()
            foreach(option IN ITEMS -finline-limit=1000 --param=inline-unit-growth=1000 --param=large-function-growth=5000)
                list(APPEND KESTRA_INLINE_ALL "$<${is_configured}:${option}>")
            endforeach()
            list(APPEND KESTRA_OPTIMIZE "$<${is_configured}:-O3>")
        endif()
    endforeach()
endif()
if(KESTRA_OPTIMIZE AND PROJECT_IS_TOP_LEVEL AND NOT WIN32 AND NOT CMAKE_CONFIGURATION_TYPES
        AND NOT DEFINED CMAKE_INTERPROCEDURAL_OPTIMIZATION)
    include(CheckIPOSupported)
    check_ipo_supported(RESULT KESTRA_HAS_IPO OUTPUT ignored LANGUAGES CXX)
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ${KESTRA_HAS_IPO})
endif()
function(kestra_optimize name)
    target_compile_options(${name} PRIVATE ${KESTRA_OPTIMIZE})
endfunction()

# Optimization across files does its work at each link. Most test programs go without and are linked
# in a moment, when the objects that they share with the others are compiled for both.
# A static library is for users whose linker may not take part in that.
set(KESTRA_FAT_OBJECTS OFF)
if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND (KESTRA_BUILD_TESTS OR KESTRA_LIBRARY_TYPE STREQUAL "STATIC")
        AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set(KESTRA_FAT_OBJECTS ON)
endif()
function(kestra_fat_objects name)
    if(KESTRA_FAT_OBJECTS)
        target_compile_options(${name} PRIVATE -ffat-lto-objects)
    endif()
endfunction()
