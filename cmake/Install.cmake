# The package: headers under include/kestra, the library, and a CMake package that names it Kestra::html.
include(CMakePackageConfigHelpers)

set(KESTRA_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kestra-html)

# The headers include each other from the root of the tree, users write <kestra/html/...>: both folders are exported.
target_include_directories(kestra-html INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

install(TARGETS kestra-html EXPORT kestra-html-targets
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestra)
install(EXPORT kestra-html-targets NAMESPACE Kestra:: DESTINATION ${KESTRA_PACKAGE_DIR})

configure_package_config_file(cmake/kestra-html-config.cmake.in kestra-html-config.cmake INSTALL_DESTINATION ${KESTRA_PACKAGE_DIR})
write_basic_package_version_file(kestra-html-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/kestra-html-config.cmake
    ${PROJECT_BINARY_DIR}/kestra-html-config-version.cmake
    DESTINATION ${KESTRA_PACKAGE_DIR})
