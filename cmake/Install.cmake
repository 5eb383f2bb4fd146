# What is installed: the library, the headers under include/kestra, a CMake package that names it
# Kestra::html, a pkg-config file, and the documents. The tool installs itself.
include(CMakePackageConfigHelpers)

set(KESTRA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kestra-html)
set(KESTRA_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Users write <kestra/html/...>. The headers include each other by relative paths, so that no folder
# of a user's can come between.
target_include_directories(kestra-html INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS kestra-html EXPORT kestra-html-targets
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestra
    FILE_SET c_headers DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT kestra-html-targets NAMESPACE Kestra:: DESTINATION ${KESTRA_PACKAGE_DIR})

configure_package_config_file(cmake/kestra-html-config.cmake.in kestra-html-config.cmake INSTALL_DESTINATION ${KESTRA_PACKAGE_DIR})
write_basic_package_version_file(kestra-html-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/kestra-html-config.cmake
    ${PROJECT_BINARY_DIR}/kestra-html-config-version.cmake
    DESTINATION ${KESTRA_PACKAGE_DIR})
if(WIN32)
    # For those who build for Windows on another system.
    install(FILES cmake/mingw-w64.cmake DESTINATION ${KESTRA_PACKAGE_DIR})
endif()

# A linker that is told -static looks for no import library, unless by its full name.
set(KESTRA_PKGCONFIG_LIBRARY -lkestra-html)
if(WIN32)
    set(KESTRA_PKGCONFIG_LIBRARY -l:libkestra-html.dll.a)
endif()
file(RELATIVE_PATH KESTRA_PKGCONFIG_TO_PREFIX /prefix/${KESTRA_PKGCONFIG_DIR} /prefix)
string(REGEX REPLACE "/$" "" KESTRA_PKGCONFIG_TO_PREFIX ${KESTRA_PKGCONFIG_TO_PREFIX})
configure_file(cmake/kestra-html.pc.in kestra-html.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestra-html.pc DESTINATION ${KESTRA_PKGCONFIG_DIR})

install(FILES CHANGELOG.md CONTRIBUTING.md LICENSE README.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY examples/c examples/crawl examples/links examples/pages examples/rewrite DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
if(WIN32 AND KESTRA_WINDOWS_PACKAGES)
    # The terms of what is linked into the library and the tool.
    install(DIRECTORY ${KESTRA_WINDOWS_PACKAGES}/share/licenses DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
