# Puts one installer bundle together where wickfield-bundle is not built; run by wickfield_installer_bundle() with
# everything by -D. The bundle is made beside its final place and takes it at the end, so that a build that is stopped
# leaves no half of one.
cmake_minimum_required(VERSION 3.25)

set(work "${BUNDLE}.partial")
set(resources "${work}/Contents/Resources")
set(tree "${resources}/PluginStructure")
get_filename_component(folder "${PROJECT}" DIRECTORY)
file(READ "${PROJECT}" project)

# read(VARIABLE KEY...): the project's value there, empty where there is none.
function(read variable)
    string(JSON value ERROR_VARIABLE missing GET "${project}" ${ARGN})
    if(missing)
        set(value "")
    endif()
    set(${variable} "${value}" PARENT_SCOPE)
endfunction()

# add_setting(KEY VALUE): a line of the settings, unless there is no value.
function(add_setting key value)
    if(NOT value STREQUAL "")
        string(REPLACE "&" "&amp;" value "${value}")
        string(REPLACE "<" "&lt;" value "${value}")
        string(REPLACE ">" "&gt;" value "${value}")
        set(settings "${settings}\t<key>${key}</key>\n\t<string>${value}</string>\n" PARENT_SCOPE)
    endif()
endfunction()

# copy_to(SOURCE PATH): links stay links, modes stay.
function(copy_to source path)
    get_filename_component(source "${source}" ABSOLUTE BASE_DIR "${folder}")
    get_filename_component(name "${source}" NAME)
    get_filename_component(above "${path}" DIRECTORY)
    file(COPY "${source}" DESTINATION "${work}.item")
    file(MAKE_DIRECTORY "${above}")
    if(EXISTS "${path}" OR IS_SYMLINK "${path}")
        message(FATAL_ERROR "${source}: something else in the bundle has its place already")
    endif()
    file(RENAME "${work}.item/${name}" "${path}")
    file(REMOVE_RECURSE "${work}.item")
endfunction()

file(REMOVE_RECURSE "${work}" "${work}.item")
file(COPY "${EXECUTABLE}" DESTINATION "${work}/Contents/MacOS")
get_filename_component(executable_name "${EXECUTABLE}" NAME)

read(NAME name)
read(VERSION version)
read(IDENTIFIER identifier)
read(author author)
if(NAME STREQUAL "" OR IDENTIFIER STREQUAL "")
    message(FATAL_ERROR "${PROJECT}: name or identifier is missing")
endif()
configure_file("${TEMPLATE}" "${work}/Contents/Info.plist" @ONLY)

set(settings "")
add_setting(KZPluginName "${NAME}")
add_setting(KZPluginVersion "${VERSION}")
add_setting(KZPluginAuthor "${author}")
foreach(key_and_setting agreement=KZEULAPath background=KZBgImagePath)
    string(REGEX MATCH "^(.*)=(.*)$" both ${key_and_setting})
    set(setting ${CMAKE_MATCH_2})
    read(path ${CMAKE_MATCH_1})
    if(path)
        get_filename_component(name "${path}" NAME)
        add_setting(${setting} "${name}")
        copy_to("${path}" "${resources}/${name}")
    endif()
endforeach()
read(branding branding)
if(branding STREQUAL "OFF")  # false, as CMake has it
    string(APPEND settings "\t<key>removeBranding</key>\n\t<true/>\n")
endif()
file(WRITE "${resources}/InstallerSettings.plist"
"<?xml version=\"1.0\" encoding=\"UTF-8\"?>
<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">
<plist version=\"1.0\">
<dict>
${settings}</dict>
</plist>
")

foreach(script preinstall postinstall)
    read(path ${script})
    if(path)
        get_filename_component(extension "${path}" LAST_EXT)
        copy_to("${path}" "${resources}/${script}${extension}")
    endif()
endforeach()

if(NOT TREE)
    read(TREE tree)
endif()
file(MAKE_DIRECTORY "${tree}")
if(TREE)
    get_filename_component(TREE "${TREE}" ABSOLUTE BASE_DIR "${folder}")
    file(COPY "${TREE}/" DESTINATION "${tree}")
endif()
string(JSON count ERROR_VARIABLE none LENGTH "${project}" items)
if(NOT none AND count GREATER 0)
    math(EXPR last "${count} - 1")
    foreach(index RANGE ${last})
        read(source items ${index} source)
        read(destination items ${index} destination)
        copy_to("${source}" "${tree}${destination}")
    endforeach()
endif()

file(REMOVE_RECURSE "${BUNDLE}")
file(RENAME "${work}" "${BUNDLE}")
