# What the tests and the benchmarks stand on.
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
set(support "${CMAKE_SOURCE_DIR}/tests/support")

if(STATION_PRECOMPILED)
    add_library(station_precompiled_tests OBJECT "${CMAKE_SOURCE_DIR}/cmake/precompiled.cpp")
    target_link_libraries(station_precompiled_tests PRIVATE station_strict Qt6::Widgets Qt6::Test)
    set_target_properties(station_precompiled_tests PROPERTIES AUTOMOC OFF AUTORCC OFF)
    target_precompile_headers(station_precompiled_tests PRIVATE "${CMAKE_SOURCE_DIR}/cmake/precompiled_tests.h")
endif()

# Servers, files and answers, without a station.
add_library(station_test_support STATIC
    "${support}/ClinicDatabase.cpp" "${support}/PrivateMariaDb.cpp" "${support}/ScriptedDesktop.cpp")
target_include_directories(station_test_support PUBLIC "${CMAKE_SOURCE_DIR}/tests")
target_compile_definitions(station_test_support PUBLIC STATION_SOURCE_FOLDER="${CMAKE_SOURCE_DIR}")
target_compile_definitions(station_test_support PRIVATE STATION_MARIADB_DATA="${CMAKE_BINARY_DIR}/mariadb")
target_link_libraries(station_test_support
    PUBLIC Qt6::Widgets Qt6::Test station_frame platform_sql
    PRIVATE station_strict)
set_target_properties(station_test_support PROPERTIES AUTOMOC OFF AUTORCC OFF)

# A server for pictures that fails as a test wants.
add_executable(pacs_peer "${support}/pacs_peer.cpp")
target_link_libraries(pacs_peer PRIVATE station_strict)
set_target_properties(pacs_peer PROPERTIES AUTOMOC OFF AUTORCC OFF)
target_compile_definitions(station_test_support PUBLIC PACS_PEER="$<TARGET_FILE:pacs_peer>")
add_dependencies(station_test_support pacs_peer)

# A whole station for the tests of its rooms.
add_library(station_box STATIC
    "${support}/FakeVideoCap.cpp" "${support}/FakeVideoCap.h" "${support}/StationInABox.cpp")
target_link_libraries(station_box
    PUBLIC station_test_support station_session platform_files
    PRIVATE station_strict platform_desktop platform_disc platform_files platform_grid platform_imagecontrol
        platform_imaging platform_printing platform_profile platform_serial)

foreach(each station_test_support station_box)
    station_precompiled(${each} tests)
endforeach()

if(CMAKE_CXX_FLAGS MATCHES "fsanitize=thread")
    target_sources(station_test_support INTERFACE "${CMAKE_CURRENT_LIST_DIR}/thread_sanitizer.cpp")
endif()
