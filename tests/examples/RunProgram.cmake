# Runs an example program and compares what it does with what is expected.
#
#     cmake [-D EMULATOR=...] -D PROGRAM=... -D PAGE=... -D STATUS=... [-D OUTPUT=file] [-D
#     ERRORS=text] -P RunProgram.cmake
#
# EMULATOR starts a program that this system cannot start by itself. PAGE is the argument of the
# program; without it there is none. Without OUTPUT or ERRORS nothing may be written there.
cmake_minimum_required(VERSION 3.25)

set(expectedOutput "")
if(DEFINED OUTPUT)
    file(READ ${OUTPUT} expectedOutput)
endif()

execute_process(COMMAND ${EMULATOR} ${PROGRAM} ${PAGE} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors ENCODING UTF-8)
foreach(text IN ITEMS expectedOutput output errors)
    string(REPLACE "\r\n" "\n" ${text} "${${text}}")
endforeach()
string(STRIP "${errors}" errors)

if(NOT status EQUAL STATUS)
    message(SEND_ERROR "exit status ${status} instead of ${STATUS}")
endif()
if(NOT output STREQUAL expectedOutput)
    message(SEND_ERROR "wrong output:\n${output}")
endif()
if(NOT errors STREQUAL "${ERRORS}")
    message(SEND_ERROR "wrong messages:\n${errors}")
endif()
