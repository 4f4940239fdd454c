# The few ways in which targets of this project are made, so that flags and layout are said once.

include(GenerateExportHeader)

# Language level, warnings and visibility of everything that is ours.
function(orvane_common target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF C_STANDARD 11 C_EXTENSIONS OFF
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow
        $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
        $<$<BOOL:${ORVANE_WERROR}>:-Werror>)
endfunction()

# Compiles once what nearly every source of a target reads: common headers of the standard library, and those that are
# named. None of ours is among them, so that a change of one compiles its own readers only. Not under -O3, where
# g++ 12 warns falsely of std::string whose header is precompiled, whatever warnings are off.
function(orvane_precompile target)
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    set(headers algorithm array cstdint functional map memory optional stdexcept string string_view
        unordered_map utility variant vector ${ARGN})
    list(TRANSFORM headers REPLACE "(.+)" "$<$<COMPILE_LANGUAGE:CXX>:<\\1$<ANGLE-R>>")
    target_precompile_headers(${target} PRIVATE ${headers})
endfunction()

# A shared platform library `orvane_NAME` (liborvane_NAME.so.1) from the .cpp files under src/, with its public
# headers under include/orvane/ and a generated <orvane/NAME_export.h>.
function(orvane_platform_library name)
    set(target orvane_${name})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp")
    add_library(${target} SHARED ${sources})
    add_library(Ovqt::${target} ALIAS ${target})
    orvane_common(${target})
    set_target_properties(${target} PROPERTIES VERSION 1.0.0 SOVERSION 1)
    string(TOUPPER "ORVANE_${name}" macro)
    generate_export_header(${target} BASE_NAME ${macro}
        EXPORT_FILE_NAME "${CMAKE_CURRENT_BINARY_DIR}/include/orvane/${name}_export.h")
    target_include_directories(${target}
        PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
               "$<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>"
               "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
        PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/src")
    install(TARGETS ${target} EXPORT OvqtTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(DIRECTORY include/orvane "${CMAKE_CURRENT_BINARY_DIR}/include/orvane"
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
endfunction()

# One layer of the widget library: an object library `ovqt_NAME` from the .cpp files of its folder, with its
# public headers under include/. The layers are put together into libovqt_x11.so.3 in packaging/.
# `this` may be null by contract in some classes, so no layer may be compiled as if it never were.
function(orvane_layer name)
    set(target ovqt_${name})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    file(GLOB headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/include/*.h")
    add_library(${target} OBJECT ${sources} ${headers})
    orvane_common(${target})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${target} PRIVATE OVQT_BUILD)
    target_compile_options(${target} PUBLIC -fno-delete-null-pointer-checks)
    target_include_directories(${target}
        PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}/include" PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
    orvane_precompile(${target} QtCore)
    set_property(GLOBAL APPEND PROPERTY OVQT_LAYERS ${target})
    install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ovqt)
endfunction()

# The test program of a folder: every *_test.cpp in it, so that no test can be left out. Each test runs in a
# process of its own under CTest. Arguments after the name are link libraries.
function(orvane_tests name)
    set(target ${name}_tests)
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    add_executable(${target} ${sources})
    orvane_common(${target})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_compile_options(${target} PRIVATE -fno-delete-null-pointer-checks)
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${target} PRIVATE ${ARGN} GTest::gtest GTest::gmock)
    if("Qt5::Test" IN_LIST ARGN)
        orvane_precompile(${target} gtest/gtest.h QtTest QtWidgets)
    else()
        orvane_precompile(${target} gtest/gtest.h)
    endif()
    target_compile_definitions(${target} PRIVATE
        ORVANE_SOURCE_DIR="${PROJECT_SOURCE_DIR}" ORVANE_BINARY_DIR="${PROJECT_BINARY_DIR}")
    gtest_discover_tests(${target} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC;LANGUAGE=en"
        DISCOVERY_MODE PRE_TEST)
endfunction()
