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

# escape(VARIABLE): its text, as it stands in XML.
function(escape variable)
    string(REPLACE "&" "&amp;" text "${${variable}}")
    string(REPLACE "<" "&lt;" text "${text}")
    string(REPLACE ">" "&gt;" text "${text}")
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# identifier_part(VARIABLE TEXT): its letters and digits as words joined by "-".
function(identifier_part variable text)
    string(TOLOWER "${text}" part)
    string(REGEX REPLACE "[^a-z0-9]+" "-" part "${part}")
    string(REGEX REPLACE "^-|-$" "" part "${part}")
    set(${variable} "${part}" PARENT_SCOPE)
endfunction()

# add_setting(KEY VALUE): a line of the settings, unless there is no value.
function(add_setting key value)
    if(NOT value STREQUAL "")
        escape(value)
        set(settings "${settings}\t<key>${key}</key>\n\t<string>${value}</string>\n" PARENT_SCOPE)
    endif()
endfunction()

# copy_to(SOURCE PATH): a source that is a link stands for what it leads to, links in it stay links, modes stay. A path
# that ends in "/" is a folder to put it into.
function(copy_to source path)
    get_filename_component(source "${source}" ABSOLUTE BASE_DIR "${folder}")
    if(path MATCHES "/$")
        get_filename_component(name "${source}" NAME)
        string(APPEND path "${name}")
    endif()
    get_filename_component(source "${source}" REALPATH)
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
if(NAME STREQUAL "")
    message(FATAL_ERROR "${PROJECT}: the name is missing")
endif()
if(IDENTIFIER STREQUAL "")
    identifier_part(author_part "${author}")
    identifier_part(name_part "${NAME}")
    if(name_part STREQUAL "" OR (author_part STREQUAL "" AND NOT author STREQUAL ""))
        message(FATAL_ERROR "${PROJECT}: no identifier can be made of the name and the author; give one")
    endif()
    string(REPLACE ".." "." IDENTIFIER "com.${author_part}.${name_part}.installer")
endif()

set(settings "")
add_setting(KZPluginName "${NAME}")
add_setting(KZPluginVersion "${VERSION}")
add_setting(KZPluginAuthor "${author}")
if(VERSION STREQUAL "")
    set(VERSION 1)
endif()
escape(NAME)
escape(VERSION)
configure_file("${TEMPLATE}" "${work}/Contents/Info.plist" @ONLY)
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
