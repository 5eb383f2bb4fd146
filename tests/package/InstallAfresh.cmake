# Installs a build into a prefix that holds nothing else, and drops what an earlier user was built from.
file(REMOVE_RECURSE ${PREFIX} ${USER})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${PREFIX} COMMAND_ERROR_IS_FATAL ANY)
