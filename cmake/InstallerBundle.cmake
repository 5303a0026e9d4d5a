# wickfield_installer_bundle(TARGET
#     PROJECT    the project file: what the plug-in is called, its agreement, image and scripts, the files to install
#     [TREE      a folder that mirrors the disk from its root, in place of the project's]
#     [OUTPUT    the folder to put the bundle into; default: the current binary folder]
#     [DEPENDS   files that stand for what the build makes of it: the tree, items])
#
# A target, part of "all", that makes "<name> Installer.app" anew when one of its parts has changed; those in the build
# folder count by DEPENDS alone. The bundle needs neither the build folder nor this source tree afterwards and runs from
# wherever it is moved. TARGET gets the property WICKFIELD_BUNDLE with the bundle's path.

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

# _wickfield_add_files(VARIABLE PATH): adds the file, or all that lie in the folder, unless the build makes it.
function(_wickfield_add_files variable path)
    cmake_path(IS_PREFIX CMAKE_BINARY_DIR "${path}" NORMALIZE is_made)
    if(IS_DIRECTORY "${path}" AND NOT is_made)
        file(GLOB_RECURSE files CONFIGURE_DEPENDS "${path}/*")
        list(APPEND ${variable} ${files})
    elseif(NOT is_made)
        list(APPEND ${variable} "${path}")
    endif()
    set(${variable} ${${variable}} PARENT_SCOPE)
endfunction()

# _wickfield_sources(VARIABLE CONTENTS FOLDER KEYS...): the files that a project's keys and its items name.
function(_wickfield_sources variable contents folder)
    set(named "")
    foreach(key IN LISTS ARGN)
        _wickfield_project_value(value "${contents}" ${key})
        list(APPEND named ${value})
    endforeach()
    string(JSON count ERROR_VARIABLE missing LENGTH "${contents}" items)
    if(NOT missing AND count GREATER 0)
        math(EXPR last "${count} - 1")
        foreach(index RANGE ${last})
            string(JSON source ERROR_VARIABLE missing GET "${contents}" items ${index} source)
            if(NOT missing)
                list(APPEND named "${source}")
            endif()
        endforeach()
    endif()
    set(sources "")
    foreach(path IN LISTS named)
        cmake_path(ABSOLUTE_PATH path BASE_DIRECTORY "${folder}" NORMALIZE)
        _wickfield_add_files(sources "${path}")
    endforeach()
    set(${variable} ${sources} PARENT_SCOPE)
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
    set(keys agreement background preinstall postinstall)
    if(NOT ARG_TREE)
        list(APPEND keys tree)
    endif()
    _wickfield_sources(parts "${contents}" "${folder}" ${keys})

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
        DEPENDS ${made_by} "${project}" ${parts} ${ARG_DEPENDS}
        COMMENT "Making ${name} Installer.app"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS "${stamp}")
    set_target_properties(${target} PROPERTIES WICKFIELD_BUNDLE "${bundle}")
endfunction()
