# The archive that `cpack` makes of what is installed: a ZIP for Windows, else a compressed tar,
# which keeps the library's links.
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_VENDOR Kestra)
string(TOLOWER ${CMAKE_SYSTEM_NAME} KESTRA_SYSTEM)
set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-${KESTRA_SYSTEM}-${CMAKE_SYSTEM_PROCESSOR})
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(KESTRA_ARCHIVE ${CPACK_PACKAGE_FILE_NAME}.zip)
else()
    set(CPACK_GENERATOR TGZ)
    set(KESTRA_ARCHIVE ${CPACK_PACKAGE_FILE_NAME}.tar.gz)
endif()
# A release goes out without the symbols of its objects; the other builds keep what a debugger
# needs.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(CPACK_STRIP_FILES ON)
endif()
include(CPack)
