# wickfield_installer_bundle(TARGET
#     PROJECT    the project file: what the plug-in is called, its agreement, image and scripts, the files to install
#     [TREE      a folder that mirrors the disk from its root, in place of the project's]
#     [OUTPUT    the folder to put the bundle into; default: the current binary folder]
#     [DEPENDS   files that stand for the tree's contents when the build makes it])
#
# A target, part of "all", that makes "<name> Installer.app" anew when one of its parts has changed. The bundle needs
# neither the build folder nor this source tree afterwards and runs from wherever it is moved. TARGET gets the property
# WICKFIELD_BUNDLE with the bundle's path.

include("${CMAKE_CURRENT_LIST_DIR}/InstallerTemplate.cmake")
set(_wickfield_bundle_scripts "${CMAKE_CURRENT_LIST_DIR}")

# _wickfield_project_value(VARIABLE CONTENTS KEY): the text under the key, empty where there is none.
function(_wickfield_project_value variable contents key)
    string(JSON value ERROR_VARIABLE missing GET "${contents}" "${key}")
    if(missing)
        set(value "")
    endif()
    set(${variable} "${value}" PARENT_SCOPE)
endfunction()

function(wickfield_installer_bundle target)
    cmake_parse_arguments(ARG "" "PROJECT;TREE;OUTPUT" "DEPENDS" ${ARGN})
    if(NOT ARG_PROJECT)
        message(FATAL_ERROR "wickfield_installer_bundle(${target}): PROJECT is missing")
    endif()
    if(NOT ARG_OUTPUT)
        set(ARG_OUTPUT "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    get_filename_component(project "${ARG_PROJECT}" ABSOLUTE)
    get_filename_component(folder "${project}" DIRECTORY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${project}")
    file(READ "${project}" contents)
    _wickfield_project_value(name "${contents}" name)
    set(parts "${project}")
    foreach(key agreement background preinstall postinstall)
        _wickfield_project_value(value "${contents}" ${key})
        if(value)
            list(APPEND parts "${folder}/${value}")
        endif()
    endforeach()

    set(bundle "${ARG_OUTPUT}/${name} Installer.app")
    set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${target}.stamp")
    if(APPLE)
        set(script "${_wickfield_bundle_scripts}/macos/AssembleBundle.cmake")
        set(template "${_wickfield_bundle_scripts}/macos/InstallerInfo.plist.in")
        set(made_by Wickfield "${script}" "${template}")
        set(command ${CMAKE_COMMAND} "-DBUNDLE=${bundle}" "-DEXECUTABLE=$<TARGET_FILE:Wickfield>"
                    "-DTEMPLATE=${template}" "-DPROJECT=${project}" "-DTREE=${ARG_TREE}" -P "${script}")
    else()
        set(made_by wickfield-bundle installer-template "${WICKFIELD_TEMPLATE_STAMP}")
        set(command $<TARGET_FILE:wickfield-bundle> create --project "${project}" --output "${ARG_OUTPUT}"
                    --template "${WICKFIELD_TEMPLATE}" --force)
        if(ARG_TREE)
            list(APPEND command --tree "${ARG_TREE}")
        endif()
    endif()
    add_custom_command(
        OUTPUT "${stamp}"
        COMMAND ${command}
        COMMAND ${CMAKE_COMMAND} -E touch "${stamp}"
        DEPENDS ${made_by} ${parts} ${ARG_DEPENDS}
        COMMENT "Making ${name} Installer.app"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS "${stamp}")
    set_target_properties(${target} PROPERTIES WICKFIELD_BUNDLE "${bundle}")
endfunction()
