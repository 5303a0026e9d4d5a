# wickfield_installer_bundle(TARGET
#     NAME         the plug-in's name; the bundle is "<NAME> Installer.app"
#     IDENTIFIER   the bundle's identifier; the installer's own preferences are kept under it
#     SETTINGS     the property list that becomes InstallerSettings.plist
#     TREE         the folder that mirrors the target file system from its root
#     [RESOURCES   files and folders for Contents/Resources: agreement, image, preinstall.*, postinstall.*, *.lproj]
#     [OUTPUT      the folder to put the bundle into; default: the current binary folder]
#     [DEPENDS     files that stand for the tree's contents when the build makes it])
#
# A target, part of "all", that assembles the bundle anew when one of its parts has changed. The bundle needs neither the
# build folder nor this source tree afterwards and runs from wherever it is moved. TARGET gets the property
# WICKFIELD_BUNDLE with the bundle's path. The system tools that the host may lack, which are the targets in the global
# property WICKFIELD_TOOLS, travel in the tools/ folder beside the program.

set(_wickfield_bundle_scripts "${CMAKE_CURRENT_LIST_DIR}")

function(wickfield_installer_bundle target)
    cmake_parse_arguments(ARG "" "NAME;IDENTIFIER;SETTINGS;TREE;OUTPUT" "RESOURCES;DEPENDS" ${ARGN})
    foreach(required NAME IDENTIFIER SETTINGS TREE)
        if(NOT ARG_${required})
            message(FATAL_ERROR "wickfield_installer_bundle(${target}): ${required} is missing")
        endif()
    endforeach()
    if(NOT ARG_OUTPUT)
        set(ARG_OUTPUT "${CMAKE_CURRENT_BINARY_DIR}")
    endif()

    set(platform_folder Linux)
    if(APPLE)
        set(platform_folder MacOS)
    endif()
    set(strip "")
    if(CMAKE_STRIP AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT WICKFIELD_SANITIZE)
        set(strip "${CMAKE_STRIP}")
    endif()
    set_target_properties(Wickfield PROPERTIES SKIP_BUILD_RPATH ON)

    get_property(tool_targets GLOBAL PROPERTY WICKFIELD_TOOLS)
    set(tools "")
    foreach(tool IN LISTS tool_targets)
        list(APPEND tools "$<TARGET_FILE:${tool}>")
    endforeach()

    set(bundle "${ARG_OUTPUT}/${ARG_NAME} Installer.app")
    set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${target}.stamp")
    set(script "${_wickfield_bundle_scripts}/AssembleBundle.cmake")
    set(template "${_wickfield_bundle_scripts}/InstallerInfo.plist.in")
    if(APPLE)
        set(template "${_wickfield_bundle_scripts}/macos/InstallerInfo.plist.in")
    endif()
    add_custom_command(
        OUTPUT "${stamp}"
        COMMAND ${CMAKE_COMMAND} "-DBUNDLE=${bundle}" "-DEXECUTABLE=$<TARGET_FILE:Wickfield>" "-DTOOLS=${tools}"
                "-DSTRIP=${strip}"
                "-DPLATFORM_FOLDER=${platform_folder}" "-DTEMPLATE=${template}" "-DNAME=${ARG_NAME}"
                "-DIDENTIFIER=${ARG_IDENTIFIER}" "-DVERSION=${PROJECT_VERSION}" "-DSETTINGS=${ARG_SETTINGS}"
                "-DRESOURCES=${ARG_RESOURCES}" "-DTREE=${ARG_TREE}" -P "${script}"
        COMMAND ${CMAKE_COMMAND} -E touch "${stamp}"
        DEPENDS Wickfield ${tool_targets} "${script}" "${template}" "${ARG_SETTINGS}" ${ARG_RESOURCES} ${ARG_DEPENDS}
        COMMENT "Assembling ${ARG_NAME} Installer.app"
        VERBATIM)
    add_custom_target(${target} ALL DEPENDS "${stamp}")
    set_target_properties(${target} PROPERTIES WICKFIELD_BUNDLE "${bundle}")
endfunction()
