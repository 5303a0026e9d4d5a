# wickfield_application_bundle(TARGET): the program as an application bundle without an installer's contents, from which
# wickfield_installer_bundle() takes the program for each installer.
function(wickfield_application_bundle target)
    set(NAME Wickfield)
    set(IDENTIFIER com.corvane.wickfield)
    set(VERSION ${PROJECT_VERSION})
    set(executable_name ${target})
    set(information "${CMAKE_CURRENT_BINARY_DIR}/${target}-Info.plist")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/macos/InstallerInfo.plist.in" "${information}" @ONLY)
    set_target_properties(${target} PROPERTIES MACOSX_BUNDLE TRUE MACOSX_BUNDLE_INFO_PLIST "${information}")
endfunction()
