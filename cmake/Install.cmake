# What is installed: the library, the headers under include/kestra, a CMake package that names it
# Kestra::html, a pkg-config file, the tool with its manual and completions, and the documents. Each
# of these components can be installed alone: runtime, development, tool, doc; and python, which is
# installed only when it is asked for.
include(CMakePackageConfigHelpers)

set(KESTRA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kestra-html)
set(KESTRA_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Users write <kestra/html/...>. The headers include each other by relative paths, so that no folder
# of a user's can come between.
target_include_directories(kestra-html INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS kestra-html EXPORT kestra-html-targets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestra COMPONENT development
    FILE_SET c_headers DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT kestra-html-targets NAMESPACE Kestra:: DESTINATION ${KESTRA_PACKAGE_DIR} COMPONENT development)

# What a static library leaves to be linked by its users, as each of them finds it.
set(KESTRA_PACKAGE_DEPENDENCIES)
set(KESTRA_PKGCONFIG_PRIVATE)
set(KESTRA_PKGCONFIG_DEFINITIONS)
# A linker that is told -static looks for no import library, unless by its full name.
set(KESTRA_PKGCONFIG_LIBRARY -lkestra-html)
if(WIN32 AND KESTRA_LIBRARY_TYPE STREQUAL "SHARED")
    set(KESTRA_PKGCONFIG_LIBRARY -l:libkestra-html.dll.a)
endif()
if(KESTRA_LIBRARY_TYPE STREQUAL "STATIC")
    set(KESTRA_PKGCONFIG_DEFINITIONS " -DKESTRA_HTML_STATIC")
    set(KESTRA_PKGCONFIG_PRIVATE "Libs.private: -lstdc++ -lm\n")
    if(WIN32)
        set(KESTRA_PKGCONFIG_PRIVATE "Libs.private: -lstdc++ -lole32\n")
    elseif(KESTRA_HTML_ICU)
        set(KESTRA_PKGCONFIG_PRIVATE "Requires.private: icu-i18n icu-uc uchardet\n${KESTRA_PKGCONFIG_PRIVATE}")
        set(KESTRA_PACKAGE_DEPENDENCIES "include(CMakeFindDependencyMacro)
find_dependency(ICU COMPONENTS uc i18n)
find_dependency(PkgConfig)
if(NOT TARGET PkgConfig::UCHARDET)
    pkg_check_modules(UCHARDET IMPORTED_TARGET uchardet)
    if(NOT UCHARDET_FOUND)
        set(\${CMAKE_FIND_PACKAGE_NAME}_FOUND FALSE)
        set(\${CMAKE_FIND_PACKAGE_NAME}_NOT_FOUND_MESSAGE \"uchardet is missing\")
        return()
    endif()
endif()
")
    endif()
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/kestra-html-config.cmake.in ${PROJECT_BINARY_DIR}/kestra-html-config.cmake
    INSTALL_DESTINATION ${KESTRA_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kestra-html-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/kestra-html-config.cmake
    ${PROJECT_BINARY_DIR}/kestra-html-config-version.cmake
    DESTINATION ${KESTRA_PACKAGE_DIR} COMPONENT development)
if(WIN32)
    # For those who build for Windows on another system.
    install(FILES cmake/mingw-w64.cmake DESTINATION ${KESTRA_PACKAGE_DIR} COMPONENT development)
endif()

file(RELATIVE_PATH KESTRA_PKGCONFIG_TO_PREFIX /prefix/${KESTRA_PKGCONFIG_DIR} /prefix)
string(REGEX REPLACE "/$" "" KESTRA_PKGCONFIG_TO_PREFIX ${KESTRA_PKGCONFIG_TO_PREFIX})
configure_file(cmake/kestra-html.pc.in kestra-html.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestra-html.pc DESTINATION ${KESTRA_PKGCONFIG_DIR} COMPONENT development)

if(KESTRA_BUILD_PYTHON)
    find_package(Python REQUIRED COMPONENTS Interpreter)
    set(KESTRA_PYTHON_DIR ${CMAKE_INSTALL_LIBDIR}/python${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}/site-packages
        CACHE STRING "Where the Python module is installed, below the prefix")
    install(TARGETS kestra-html-python LIBRARY DESTINATION ${KESTRA_PYTHON_DIR}/kestra_html COMPONENT python EXCLUDE_FROM_ALL)
    install(DIRECTORY python/kestra_html DESTINATION ${KESTRA_PYTHON_DIR} COMPONENT python EXCLUDE_FROM_ALL
        FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN "py.typed" PATTERN "__pycache__" EXCLUDE)
endif()

install(FILES CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
install(DIRECTORY examples/c examples/crawl examples/links examples/pages examples/rewrite
    DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT doc PATTERN "__pycache__" EXCLUDE)
if(WIN32 AND KESTRA_WINDOWS_PACKAGES)
    # The terms of what is linked into the library and the tool.
    install(DIRECTORY ${KESTRA_WINDOWS_PACKAGES}/share/licenses DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
endif()
