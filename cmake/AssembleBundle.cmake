# Puts one installer bundle together; run by wickfield_installer_bundle() with everything by -D. The bundle is made
# beside its final place and takes it at the end, so that a build that is stopped leaves no half of one.
cmake_minimum_required(VERSION 3.25)

set(work "${BUNDLE}.partial")
set(contents "${work}/Contents")
file(REMOVE_RECURSE "${work}")

file(COPY "${EXECUTABLE}" DESTINATION "${contents}/${PLATFORM_FOLDER}")
get_filename_component(executable_name "${EXECUTABLE}" NAME)
set(programs "${contents}/${PLATFORM_FOLDER}/${executable_name}")
foreach(tool IN LISTS TOOLS)
    file(COPY "${tool}" DESTINATION "${contents}/${PLATFORM_FOLDER}/tools")
    get_filename_component(tool_name "${tool}" NAME)
    list(APPEND programs "${contents}/${PLATFORM_FOLDER}/tools/${tool_name}")
endforeach()
if(STRIP)
    execute_process(COMMAND "${STRIP}" ${programs} COMMAND_ERROR_IS_FATAL ANY)
endif()

configure_file("${TEMPLATE}" "${contents}/Info.plist" @ONLY)
file(MAKE_DIRECTORY "${contents}/Resources")
file(COPY_FILE "${SETTINGS}" "${contents}/Resources/InstallerSettings.plist")
foreach(resource IN LISTS RESOURCES)
    file(COPY "${resource}" DESTINATION "${contents}/Resources")  # links stay links, modes stay
endforeach()
file(COPY "${TREE}/" DESTINATION "${contents}/Resources/PluginStructure")

file(REMOVE_RECURSE "${BUNDLE}")
file(RENAME "${work}" "${BUNDLE}")
