# Runs a program that rewrites a page, and compares the bytes that it writes with those of a file.
#
#     cmake [-D EMULATOR=...] -D PROGRAM=... -D PAGE=... -D WRITTEN=... -D EXPECTED=... -P
#     CompareRewritten.cmake
cmake_minimum_required(VERSION 3.25)

file(REMOVE ${WRITTEN})
execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${PAGE} ${WRITTEN} RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "exit status ${status}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WRITTEN} ${EXPECTED} RESULT_VARIABLE differs)
if(NOT differs EQUAL 0)
    message(FATAL_ERROR "${WRITTEN} differs from ${EXPECTED}")
endif()
