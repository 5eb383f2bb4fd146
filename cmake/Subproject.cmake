# Within another project: its sources include <kestra/html/...>, as users of the installed package do,
# and no folder of ours comes between theirs.
get_target_property(headers kestra-html HEADER_SET)
foreach(header IN LISTS headers)
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${header})
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/kestra/${name} CONTENT "#include \"${header}\"\n" @ONLY)
endforeach()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/kestra/html.h CONTENT "#include \"${PROJECT_SOURCE_DIR}/c/kestra/html.h\"\n" @ONLY)
set_property(TARGET kestra-html PROPERTY INTERFACE_INCLUDE_DIRECTORIES $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
