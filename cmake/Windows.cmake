# What a library or a program for Windows carries beside its code.
enable_language(RC)

# A loader that may place the image anywhere in 64 bits, and no execution of data: the defaults of
# newer linkers, asked for by name.
add_link_options(-Wl,--dynamicbase,--high-entropy-va,--nxcompat)

# Gives a target a version resource: the project's version, the name of its file and a description.
function(kestra_version_resource target file description)
    get_target_property(type ${target} TYPE)
    set(VERSION_FILE_TYPE VFT_APP)
    if(type STREQUAL "SHARED_LIBRARY")
        set(VERSION_FILE_TYPE VFT_DLL)
    endif()
    set(VERSION_FILE ${file})
    set(VERSION_DESCRIPTION ${description})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${PROJECT_BINARY_DIR}/version/${target}.rc @ONLY)
    # Apart from the target, whose options are for the C++ compiler.
    add_library(${target}-version OBJECT ${PROJECT_BINARY_DIR}/version/${target}.rc)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}-version>)
endfunction()
