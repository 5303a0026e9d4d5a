# The target installer-template: the installer without anything to install, which wickfield-bundle fills. It lies where
# wickfield-bundle looks from its own folder, in the build folder as in an installation.
#
# WICKFIELD_TEMPLATE is its path, WICKFIELD_TEMPLATE_STAMP a file that is as new as it is.

set(WICKFIELD_TEMPLATE
    "${PROJECT_BINARY_DIR}/tools/wickfield-bundle/share/wickfield/templates/${WICKFIELD_HOST}/Wickfield.app")
set(WICKFIELD_TEMPLATE_STAMP "${PROJECT_BINARY_DIR}/tools/wickfield-bundle/template.stamp")

function(wickfield_installer_template)
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
    set(script "${PROJECT_SOURCE_DIR}/cmake/AssembleTemplate.cmake")
    set(information "${PROJECT_SOURCE_DIR}/cmake/InstallerInfo.plist.in")
    add_custom_command(
        OUTPUT "${WICKFIELD_TEMPLATE_STAMP}"
        COMMAND ${CMAKE_COMMAND} "-DTEMPLATE=${WICKFIELD_TEMPLATE}" "-DEXECUTABLE=$<TARGET_FILE:Wickfield>"
                "-DTOOLS=${tools}" "-DSTRIP=${strip}" -DPLATFORM_FOLDER=Linux "-DINFORMATION=${information}"
                "-DVERSION=${PROJECT_VERSION}" -P "${script}"
        COMMAND ${CMAKE_COMMAND} -E touch "${WICKFIELD_TEMPLATE_STAMP}"
        DEPENDS Wickfield ${tool_targets} "${script}" "${information}"
        COMMENT "Assembling the installer's template"
        VERBATIM)
    add_custom_target(installer-template ALL DEPENDS "${WICKFIELD_TEMPLATE_STAMP}")
endfunction()
