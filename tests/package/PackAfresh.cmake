# Packs a build as `cpack` does and unpacks the archive as a user does, into a folder that holds
# nothing else. What earlier users were built from is dropped.
#
#     cmake -D CPACK=... -D CONFIG=CPackConfig.cmake -D ARCHIVE=name -D FOLDER=... -D PREFIX=... -D
#     USERS=... -P PackAfresh.cmake
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${FOLDER} ${PREFIX} ${USERS})
execute_process(COMMAND ${CPACK} --config ${CONFIG} -B ${FOLDER}/packed COMMAND_ERROR_IS_FATAL ANY)
file(GLOB archives LIST_DIRECTORIES false RELATIVE ${FOLDER}/packed ${FOLDER}/packed/*)
if(NOT archives STREQUAL ARCHIVE)
    message(FATAL_ERROR "cpack made \"${archives}\" instead of ${ARCHIVE}")
endif()

# All of it lies in one folder, named as the archive is.
file(ARCHIVE_EXTRACT INPUT ${FOLDER}/packed/${ARCHIVE} DESTINATION ${FOLDER}/unpacked)
file(GLOB top RELATIVE ${FOLDER}/unpacked ${FOLDER}/unpacked/*)
string(REGEX REPLACE "\\.(zip|tar\\.gz)$" "" name ${ARCHIVE})
if(NOT top STREQUAL name)
    message(FATAL_ERROR "${ARCHIVE} holds \"${top}\" instead of ${name}")
endif()
file(RENAME ${FOLDER}/unpacked/${name} ${PREFIX})
