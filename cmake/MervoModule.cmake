# A folder is a library, and its CMakeLists.txt says what it may see.
#
#   mervo_module(SOURCES a.cpp b.cpp EXPOSES core/foundation MAY_USE platform LIBRARIES SQLite::SQLite3)
#
# SOURCES    the files of this folder
# EXPOSES    the folders and outside libraries whose types stand in its headers: whoever links it sees them
# MAY_USE    the folders that only its sources include; a test compares both lists with every #include
# LIBRARIES  the outside libraries that only its sources use
#
# The bundle of the build tree has the layout of the installed one:
#   mervo_program(mervo AT Helpers SOURCES main.cpp MAY_USE frontends/cli ON_PATH)
# ON_PATH: installed, the program is also linked into the bin folder, and the link is in the manifest.

set(MERVO_BUNDLE ${CMAKE_BINARY_DIR}/Contents)

function(mervo_target_name folder result)
    string(REPLACE "/" "-" name "mervo-${folder}")
    set(${result} ${name} PARENT_SCOPE)
endfunction()

function(mervo_link target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "EXPOSES;MAY_USE;LIBRARIES")
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    foreach(used IN LISTS ARG_EXPOSES)
        if(NOT used MATCHES "::")
            mervo_target_name(${used} used)
        endif()
        target_link_libraries(${target} PUBLIC ${used})
    endforeach()
    foreach(folder IN LISTS ARG_MAY_USE)
        mervo_target_name(${folder} used)
        target_link_libraries(${target} PRIVATE ${used})
    endforeach()
    target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
endfunction()

function(mervo_module)
    cmake_parse_arguments(PARSE_ARGV 0 ARG "" "" "SOURCES;EXPOSES;MAY_USE;LIBRARIES")
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    mervo_target_name(${folder} target)
    add_library(${target} STATIC ${ARG_SOURCES})
    mervo_link(${target} EXPOSES ${ARG_EXPOSES} MAY_USE ${ARG_MAY_USE} LIBRARIES ${ARG_LIBRARIES})
endfunction()

# mervo_qt_module(...): a module on QtCore, whose classes may have signals.
function(mervo_qt_module)
    mervo_module(${ARGN})
    file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    mervo_target_name(${folder} target)
    target_link_libraries(${target} PUBLIC Qt6::Core)
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
endfunction()

function(mervo_program target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "ON_PATH" "AT" "SOURCES;MAY_USE;LIBRARIES")
    add_executable(${target} ${ARG_SOURCES})
    mervo_link(${target} MAY_USE ${ARG_MAY_USE} LIBRARIES ${ARG_LIBRARIES})
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${MERVO_BUNDLE}/${ARG_AT})
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBDIR}/mervo/Contents/${ARG_AT})
    if(ARG_ON_PATH)
        install(CODE "
            set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
            file(MAKE_DIRECTORY \"\${bin}\")
            file(CREATE_LINK ../${CMAKE_INSTALL_LIBDIR}/mervo/Contents/${ARG_AT}/${target} \"\${bin}/${target}\" SYMBOLIC)
            list(APPEND CMAKE_INSTALL_MANIFEST_FILES \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/${target}\")
            message(STATUS \"Linking: \${bin}/${target}\")")
    endif()
endfunction()

# mervo_platform_module(mervo-tls SOURCES a.cpp MAY_USE platform/desk/mime): a part of the bundle that is loaded when it is
# first needed, with the library behind it.
function(mervo_platform_module target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;MAY_USE;LIBRARIES")
    add_library(${target} MODULE ${ARG_SOURCES})
    mervo_link(${target} MAY_USE ${ARG_MAY_USE} LIBRARIES ${ARG_LIBRARIES})
    set_target_properties(${target} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${MERVO_BUNDLE}/Helpers/platform)
    target_link_options(${target} PRIVATE -Wl,--exclude-libs,ALL)
    cmake_language(EVAL CODE # the target's name now, the call later
        "cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR} CALL mervo_make_position_independent ${target})")
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/mervo/Contents/Helpers/platform)
endfunction()

# What goes into a loaded module must not depend on its place in memory. Our own libraries come into a module whole or not
# at all, so that nothing in them is replaced from outside. Called when all targets are known.
function(mervo_make_position_independent target)
    get_target_property(is_done ${target} MERVO_POSITION_INDEPENDENT)
    if(is_done)
        return()
    endif()
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON MERVO_POSITION_INDEPENDENT ON)
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
    get_target_property(linked ${target} LINK_LIBRARIES)
    foreach(library IN LISTS linked)
        if(library MATCHES "^mervo-" AND TARGET ${library})
            mervo_make_position_independent(${library})
        endif()
    endforeach()
endfunction()

# mervo_test(core-policy SOURCES a.cpp MAY_USE core/policy): one GoogleTest program, its cases known to ctest.
function(mervo_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;MAY_USE;LIBRARIES")
    set(target test-${name})
    add_executable(${target} ${ARG_SOURCES})
    mervo_link(${target} MAY_USE ${ARG_MAY_USE} LIBRARIES ${ARG_LIBRARIES} GTest::gtest_main GTest::gmock)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${MERVO_BUNDLE}/Tests)
    target_compile_definitions(${target} PRIVATE MERVO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES PROPERTIES TIMEOUT 300)
endfunction()

# mervo_script_test(mail-bulk SCRIPT bulk_test.py ARGUMENTS word... TIMEOUT 300 ENVIRONMENT NAME=value): one test in
# Python. The system's own interpreter runs it, since another one does not see the packages of Debian; the modules of
# tests/support are found by their names.
function(mervo_script_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "SCRIPT;TIMEOUT" "ARGUMENTS;ENVIRONMENT")
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 180) # seconds
    endif()
    add_test(NAME ${name} COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_SOURCE_DIR}/${ARG_SCRIPT} ${ARG_ARGUMENTS})
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "PYTHONPATH=${PROJECT_SOURCE_DIR}/tests/support;${ARG_ENVIRONMENT}")
endfunction()
