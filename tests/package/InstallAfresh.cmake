# Installs a build into a prefix that holds nothing else, and drops what earlier users were built from.
file(REMOVE_RECURSE ${PREFIX} ${USERS})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${PREFIX} COMMAND_ERROR_IS_FATAL ANY)
