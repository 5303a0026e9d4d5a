# cmake --install: the library and kzfile, for whoever wants to use them without the installer, and wickfield-bundle with
# what it makes installers of, which is also a component of its own: --component maker. All of the rules are here, so
# that one script installs it all.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/InstallerTemplate.cmake)
find_package(OpenSSL 3.0 REQUIRED COMPONENTS Crypto)
find_package(EXPAT 2.4 REQUIRED)

# One archive of the rooms that need no window. Who links it gets what its programs need, and no option of this build.
set(rooms wickfield_lib wickfield_base wickfield_ports wickfield_posix wickfield_linux wickfield_rights
    wickfield_rights_wire)
list(TRANSFORM rooms REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>" OUTPUT_VARIABLE objects)
add_library(wickfield STATIC ${objects})
set_target_properties(wickfield PROPERTIES LINKER_LANGUAGE CXX)
target_compile_features(wickfield INTERFACE cxx_std_20)
target_include_directories(wickfield INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/wickfield>)
target_link_libraries(wickfield PUBLIC Threads::Threads PRIVATE OpenSSL::Crypto EXPAT::EXPAT systemd
                      ${CMAKE_DL_LIBS})

# The headers that a program includes, and no others: internal ones may change with every version.
file(GLOB headers RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS lib/*.h platform/ports/*.h)
list(REMOVE_ITEM headers lib/KZLogFiles.h)
foreach(topic BulkMutations Copying DigestContext FileDigest FileReference Hashing Metadata Mutations Names Queries Waiting)
    list(APPEND headers lib/KZFileManager/${topic}.h)
endforeach()
list(APPEND headers lib/base/Format.h lib/base/FormatText.h lib/base/PathText.h platform/linux/services/LinuxHost.h
     platform/linux/rights/AuthorizationService.h platform/linux/rights/PasswordPrompt.h platform/linux/rights/Secret.h)
foreach(header IN LISTS headers)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wickfield/${folder})
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Wickfield)
set(libexec libexec/wickfield)  # where the library looks, from the folder bin
install(TARGETS wickfield EXPORT WickfieldTargets)
install(EXPORT WickfieldTargets NAMESPACE Wickfield:: DESTINATION ${package})
configure_package_config_file(cmake/WickfieldConfig.cmake.in ${PROJECT_BINARY_DIR}/WickfieldConfig.cmake
                              INSTALL_DESTINATION ${package} PATH_VARS libexec)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/WickfieldConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/WickfieldConfig.cmake ${PROJECT_BINARY_DIR}/WickfieldConfigVersion.cmake
        DESTINATION ${package})

get_property(tools GLOBAL PROPERTY WICKFIELD_TOOLS)
install(TARGETS ${tools} RUNTIME DESTINATION ${libexec})
install(TARGETS kzfile)
install(FILES ${PROJECT_SOURCE_DIR}/tools/kzfile/kzfile.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# install_completion(PROGRAM [COMPONENT name]): where bash, zsh and fish look for it.
function(install_completion program)
    set(source ${PROJECT_SOURCE_DIR}/tools/commandline/completion)
    install(FILES ${source}.bash RENAME ${program} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
            ${ARGN})
    install(FILES ${source}.zsh RENAME _${program} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions ${ARGN})
    install(FILES ${source}.fish RENAME ${program}.fish
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d ${ARGN})
endfunction()
install_completion(kzfile)

set(share share/wickfield)  # where wickfield-bundle looks, from the folder bin
install(TARGETS wickfield-bundle COMPONENT maker)
install(TARGETS wickfield_media RUNTIME DESTINATION ${libexec} COMPONENT maker)
install(DIRECTORY ${WICKFIELD_TEMPLATE} DESTINATION ${share}/templates/${WICKFIELD_HOST} USE_SOURCE_PERMISSIONS
        COMPONENT maker)
install(FILES ${PROJECT_SOURCE_DIR}/tools/wickfield-bundle/wickfield.schema.json DESTINATION ${share} COMPONENT maker)
install(FILES ${PROJECT_SOURCE_DIR}/tools/wickfield-bundle/example/wickfield.json DESTINATION ${share}/example
        COMPONENT maker)
install(FILES ${PROJECT_SOURCE_DIR}/tools/wickfield-bundle/wickfield-bundle.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT maker)
install_completion(wickfield-bundle COMPONENT maker)
