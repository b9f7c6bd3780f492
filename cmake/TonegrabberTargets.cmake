# Helpers shared by every subsystem: warnings, sanitizers, libraries and test executables.

set(TG_DATADIR "${CMAKE_INSTALL_FULL_DATADIR}/tonegrabber")

function(tg_apply_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra)
    target_compile_definitions(${target} PRIVATE
        TONEGRABBER_VERSION="${PROJECT_VERSION}"
        TONEGRABBER_DATADIR="${TG_DATADIR}")
    if(TG_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
        target_link_options(${target} PRIVATE -fsanitize=address,undefined)
    endif()
    if(TG_SANITIZE_THREAD)
        target_compile_options(${target} PRIVATE -fsanitize=thread -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=thread)
    endif()
    if(TG_BUILD_FUZZ)
        # Coverage for libFuzzer in every object; fuzz targets add the fuzzer's main.
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
endfunction()

# tg_add_library(<name> SOURCES ... [PUBLIC_LIBS ...] [PRIVATE_LIBS ...])
# Sources include headers; the repository root is the include root ("core/Records.h").
function(tg_add_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_LIBS} PRIVATE ${ARG_PRIVATE_LIBS})
    tg_apply_options(${name})
endfunction()

# tg_add_executable(<name> SOURCES ... [LIBS ...]) — installed.
function(tg_add_executable name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS})
    tg_apply_options(${name})
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()

# tg_add_tests(<name> SOURCES ... [LIBS ...] [LABELS ...])
# Every test runs in a process of its own with a fresh temporary TONEGRABBER_HOME
# (tests/support/TestMain.cpp).
function(tg_add_tests name)
    if(NOT TG_BUILD_TESTS)
        return()
    endif()
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} tg_testsupport GTest::gtest GTest::gmock)
    tg_apply_options(${name})
    set(labels unit)
    if(ARG_LABELS)
        set(labels ${ARG_LABELS})
    endif()
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        PROPERTIES LABELS "${labels}" TIMEOUT 600)
endfunction()

# tg_check_test_needs(<result-var> <what> [PROGRAMS ...] [FILES ...])
# Programs and files a layer of tests needs. Where one is missing, the tests are left out with
# a note on a developer's machine; under CI (environment CI=true) the configure stops instead,
# so that a CI run can never pass without the tests it is meant to run.
function(tg_check_test_needs result what)
    cmake_parse_arguments(ARG "" "" "PROGRAMS;FILES" ${ARGN})
    set(missing)
    foreach(program IN LISTS ARG_PROGRAMS)
        string(MAKE_C_IDENTIFIER "TG_PROGRAM_${program}" variable)
        find_program(${variable} ${program})
        if(NOT ${variable})
            list(APPEND missing ${program})
        endif()
    endforeach()
    foreach(file IN LISTS ARG_FILES)
        if(NOT EXISTS ${file})
            list(APPEND missing ${file})
        endif()
    endforeach()
    if(NOT missing)
        set(${result} TRUE PARENT_SCOPE)
        return()
    endif()
    list(JOIN missing ", " text)
    if("$ENV{CI}" STREQUAL "true")
        message(FATAL_ERROR "${what} need ${text}, not found here; under CI they are not "
                            "left out (scripts/install-deps.sh installs them)")
    endif()
    message(STATUS "${what} left out: ${text} missing (scripts/install-deps.sh installs them)")
    set(${result} FALSE PARENT_SCOPE)
endfunction()
