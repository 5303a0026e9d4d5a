# How a room of the house becomes a target.

add_library(wickfield_options INTERFACE)
target_include_directories(wickfield_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(wickfield_options INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Wold-style-cast
                       -Woverloaded-virtual -Wundef)
# GCC 12 sees uninitialised alternatives in every optimised std::variant; clang and the sanitizers look for real ones.
target_compile_options(wickfield_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
if(WICKFIELD_WERROR)
    target_compile_options(wickfield_options INTERFACE -Werror)
endif()
if(WICKFIELD_SANITIZE)
    target_compile_options(wickfield_options INTERFACE -fsanitize=${WICKFIELD_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(wickfield_options INTERFACE -fsanitize=${WICKFIELD_SANITIZE})
endif()
find_package(Threads REQUIRED)

# wickfield_room(NAME [LINK libraries...]): a static library of every source in the current folder (and the subfolders
# named after FOLDERS). A room links only the rooms that it may include.
function(wickfield_room name)
    cmake_parse_arguments(ARG "" "" "LINK;FOLDERS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS *.cpp *.mm *.h)
    foreach(folder IN LISTS ARG_FOLDERS)
        file(GLOB more CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.mm ${folder}/*.h)
        list(APPEND sources ${more})
    endforeach()
    if(NOT sources)
        message(FATAL_ERROR "The room ${name} has no sources")
    endif()
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(${name} PUBLIC wickfield_options Threads::Threads ${ARG_LINK})
endfunction()

# wickfield_test(FOLDER [TIMEOUT seconds] LINK libraries...): one test program of every *Tests.cpp in the folder, whose
# name is the label of its tests.
function(wickfield_test folder)
    cmake_parse_arguments(ARG "" "TIMEOUT" "LINK" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.h)
    if(NOT sources)
        return()
    endif()
    string(REPLACE "/" "_" name ${folder})
    add_executable(${name}_tests ${sources})
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/main.cpp)
        target_link_libraries(${name}_tests PRIVATE ${ARG_LINK} GTest::gmock)
    else()
        target_link_libraries(${name}_tests PRIVATE ${ARG_LINK} GTest::gmock_main)
    endif()
    gtest_discover_tests(${name}_tests TEST_PREFIX "${folder}: " DISCOVERY_TIMEOUT 60
                         PROPERTIES LABELS ${name} TIMEOUT ${ARG_TIMEOUT})
endfunction()
