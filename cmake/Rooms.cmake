# A room is a library whose headers can be included only by those who link it: the source folder itself is on no
# include path, each room is reached through a link of its own under the build folder.

add_library(station_strict INTERFACE)
target_compile_options(station_strict INTERFACE
    -Wall -Wextra -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor)
if(STATION_WERROR)
    target_compile_options(station_strict INTERFACE -Werror)
endif()
target_compile_definitions(station_strict INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)

# station_room(NAME FOLDER SOURCES ... LINKS ... [PRIVATE_LINKS ...])
# FOLDER is the path below src/, and the prefix of the room's includes.
function(station_room name folder)
    cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
    set(doors "${CMAKE_BINARY_DIR}/rooms/${name}")
    get_filename_component(parent "${doors}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/src/${folder}" "${doors}/${folder}" SYMBOLIC)
    list(TRANSFORM ROOM_SOURCES PREPEND "${CMAKE_SOURCE_DIR}/src/${folder}/")
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_include_directories(${name} PUBLIC "${doors}")
    target_link_libraries(${name} PUBLIC ${ROOM_LINKS} PRIVATE station_strict ${ROOM_PRIVATE_LINKS})
endfunction()
