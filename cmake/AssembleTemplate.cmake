# Puts the template together that bundles are made from: the program and the tools that travel with it, in an
# application bundle without an installer's contents. Run by the target installer-template with everything by -D.
cmake_minimum_required(VERSION 3.25)

set(work "${TEMPLATE}.partial")
set(folder "${work}/Contents/${PLATFORM_FOLDER}")
file(REMOVE_RECURSE "${work}")

file(COPY "${EXECUTABLE}" DESTINATION "${folder}")
get_filename_component(executable_name "${EXECUTABLE}" NAME)
set(programs "${folder}/${executable_name}")
foreach(tool IN LISTS TOOLS)
    file(COPY "${tool}" DESTINATION "${folder}/tools")
    get_filename_component(tool_name "${tool}" NAME)
    list(APPEND programs "${folder}/tools/${tool_name}")
endforeach()
if(STRIP)
    execute_process(COMMAND "${STRIP}" ${programs} COMMAND_ERROR_IS_FATAL ANY)
endif()
configure_file("${INFORMATION}" "${work}/Contents/Info.plist" @ONLY)

file(REMOVE_RECURSE "${TEMPLATE}")
file(RENAME "${work}" "${TEMPLATE}")
