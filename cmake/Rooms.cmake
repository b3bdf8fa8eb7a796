# A room is a library whose headers can be included only by those who link it: the source folder itself is on no
# include path, each room is reached through a link of its own under the build folder. It can link only rooms that have
# been declared before it, so no arrow points up.

add_library(station_strict INTERFACE)
# Threads everywhere alike: a precompiled header fits only sources that are compiled in the same way.
target_compile_options(station_strict INTERFACE -pthread
    -Wall -Wextra -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor)
if(STATION_WERROR)
    target_compile_options(station_strict INTERFACE -Werror)
endif()
target_compile_definitions(station_strict INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)

# The headers of Qt that nearly every file includes, compiled once: without widgets and with them.
if(STATION_PRECOMPILED)
    foreach(kind core widgets)
        add_library(station_precompiled_${kind} OBJECT "${CMAKE_CURRENT_LIST_DIR}/precompiled.cpp")
        target_link_libraries(station_precompiled_${kind} PRIVATE station_strict Qt6::Core Qt6::Gui)
        set_target_properties(station_precompiled_${kind} PROPERTIES AUTOMOC OFF AUTORCC OFF)
    endforeach()
    target_link_libraries(station_precompiled_widgets PRIVATE Qt6::Widgets)
    target_precompile_headers(station_precompiled_core PRIVATE "${CMAKE_CURRENT_LIST_DIR}/precompiled_core.h")
    target_precompile_headers(station_precompiled_widgets PRIVATE "${CMAKE_CURRENT_LIST_DIR}/precompiled_widgets.h")
endif()

function(station_precompiled name kind)
    if(STATION_PRECOMPILED)
        target_precompile_headers(${name} REUSE_FROM station_precompiled_${kind})
    endif()
endfunction()

# station_room(NAME FOLDER [LINKS ...] [PRIVATE_LINKS ...] [RESOURCES ...])
# All sources of FOLDER, which is the path below src/ and the prefix of the room's includes, but for a program's main.cpp;
# a folder inside it that has a CMakeLists.txt is a target of its own. A room without Qt6::Widgets among its links can't include a widget.
function(station_room name folder)
    cmake_parse_arguments(ROOM "" "" "LINKS;PRIVATE_LINKS;RESOURCES" ${ARGN})
    foreach(lower ${ROOM_LINKS} ${ROOM_PRIVATE_LINKS})
        if(NOT TARGET ${lower})
            message(FATAL_ERROR "${name} links ${lower}, which doesn't stand below it")
        endif()
    endforeach()
    set(home "${CMAKE_SOURCE_DIR}/src/${folder}")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${home}/*.cpp" "${home}/*.h")
    list(REMOVE_ITEM sources "${home}/main.cpp")
    file(GLOB_RECURSE inner "${home}/*/CMakeLists.txt")
    foreach(each ${inner})
        get_filename_component(each "${each}" DIRECTORY)
        list(FILTER sources EXCLUDE REGEX "^${each}/")
    endforeach()

    set(doors "${CMAKE_BINARY_DIR}/rooms/${name}")
    get_filename_component(parent "${doors}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${home}" "${doors}/${folder}" SYMBOLIC)
    add_library(${name} STATIC ${sources} ${ROOM_RESOURCES})
    target_include_directories(${name} PUBLIC "${doors}")
    target_link_libraries(${name} PUBLIC Qt6::Core ${ROOM_LINKS} PRIVATE station_strict ${ROOM_PRIVATE_LINKS})

    set(mocs OFF)
    foreach(each ${sources})
        file(STRINGS "${each}" objects REGEX "Q_OBJECT|Q_GADGET" LIMIT_COUNT 1)
        if(objects)
            set(mocs ON)
        endif()
    endforeach()
    set_target_properties(${name} PROPERTIES AUTOMOC ${mocs})

    if("Qt6::Widgets" IN_LIST ROOM_LINKS OR "Qt6::Widgets" IN_LIST ROOM_PRIVATE_LINKS)
        station_precompiled(${name} widgets)
    elseif(ROOM_LINKS)
        station_precompiled(${name} core)
    endif()
endfunction()
