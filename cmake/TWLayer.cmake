# One static library per row of layers.txt. Headers are included as "folder/TWName.h", relative to src/. Every build and
# every ./test compare the includes with the table (tools/check includes).

file(STRINGS "${CMAKE_CURRENT_LIST_DIR}/layers.txt" TW_ROWS REGEX "^[^#]")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/layers.txt")
foreach(row IN LISTS TW_ROWS)
    string(REGEX MATCH "^[^ |]+" folder "${row}")
    list(APPEND TW_FOLDERS "${folder}")
endforeach()

# tw_target(platform/qt NAME): sets NAME to the name of that folder's library, tw_platform_qt.
function(tw_target folder name)
    string(REPLACE "/" "_" target "tw_${folder}")
    set(${name} "${target}" PARENT_SCOPE)
endfunction()

# tw_link(TARGET PUBLIC|PRIVATE names...): links libraries, which may be named by their folder in the table.
function(tw_link target scope)
    foreach(library IN LISTS ARGN)
        if(library IN_LIST TW_FOLDERS)
            tw_target("${library}" library)
        endif()
        target_link_libraries(${target} ${scope} "${library}")
    endforeach()
endfunction()

# tw_files(NAME folder pattern): sets NAME to the files below src/folder that belong to no other row.
function(tw_files name folder pattern)
    file(GLOB_RECURSE files CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${folder}/${pattern}")
    foreach(other IN LISTS TW_FOLDERS)
        if(other MATCHES "^${folder}/")
            list(FILTER files EXCLUDE REGEX "^${CMAKE_SOURCE_DIR}/src/${other}/")
        endif()
    endforeach()
    set(${name} "${files}" PARENT_SCOPE)
endfunction()

# tw_precompile(TARGET FOLDER): precompiles headers, which saves a tenth of the time of a release build. Other builds do
# not, so that they reveal missing includes.
function(tw_precompile target folder)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    if(folder STREQUAL "ui")
        target_precompile_headers(${target} PRIVATE
            <QtWidgets> <algorithm> <functional> <memory> <optional> <string> <vector>)
    elseif(folder STREQUAL "support")
        target_precompile_headers(${target} PRIVATE <algorithm> <functional> <memory> <optional> <string> <vector>)
    elseif(NOT folder STREQUAL "platform/qt")
        target_precompile_headers(${target} REUSE_FROM tw_support)
    endif()
endfunction()

# tw_layer(row): adds the library of one row. Its target ..._verify_interface_header_sets compiles each header alone.
function(tw_layer row)
    if(NOT row MATCHES "^([^ |]+) *\\|([^|]*)\\|([^|]*)$")
        message(FATAL_ERROR "cmake/layers.txt: cannot read \"${row}\"")
    endif()
    set(folder "${CMAKE_MATCH_1}")
    string(REGEX MATCHALL "[^ ]+" libraries "${CMAKE_MATCH_2} ${CMAKE_MATCH_3}")
    set(needs_qt OFF)
    if(row MATCHES "Qt6::")
        set(needs_qt ON)
    endif()
    if(row MATCHES "\\(program\\)" OR (needs_qt AND NOT TIDEWELL_QT))
        return()
    endif()
    tw_target("${folder}" target)
    tw_files(sources "${folder}" "*.cpp")
    tw_files(headers "${folder}" "*.h")
    add_library(${target} STATIC ${sources})
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${CMAKE_SOURCE_DIR}/src" FILES ${headers})
    set_target_properties(${target} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON AUTOMOC ${needs_qt})
    tw_link(${target} PUBLIC ${libraries})
    target_link_libraries(${target} PRIVATE tw_warnings)
    tw_precompile(${target} ${folder})
endfunction()

# tw_tests(FOLDER [LABEL label] USES names...): adds one test program from all files in tests/FOLDER.
function(tw_tests folder)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LABEL" "USES")
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp")
    if(NOT sources)
        message(FATAL_ERROR "There are no tests in tests/${folder}.")
    endif()
    if(NOT arg_LABEL)
        set(arg_LABEL unit)
    endif()
    string(REPLACE "/" "_" name "tests_${folder}")
    add_executable(${name} ${sources} "${CMAKE_SOURCE_DIR}/tests/TWTestMain.cpp")
    target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
    set_target_properties(${name} PROPERTIES UNITY_BUILD "${TIDEWELL_JOIN_TESTS}" UNITY_BUILD_BATCH_SIZE 6)
    # -O0 compiles twice as fast with sanitizers. In joined sources, a fixture in an unnamed namespace is no fault.
    target_compile_options(${name} PRIVATE -O0 -Wno-subobject-linkage)
    tw_link(${name} PRIVATE ${arg_USES} support GTest::gtest tw_warnings)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${folder}/"
        PROPERTIES LABELS "${arg_LABEL}" TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()
