# What every target of ours is compiled with. (That a warning ends the build is the presets' word: another compiler has
# others, and who only wants a program is not to mend them.)
add_library(ruvo_options INTERFACE)
target_include_directories(ruvo_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR})
# (The resource compiler of Windows builds knows no warnings.)
target_compile_options(ruvo_options INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13 AND NOT WIN32)
    # At -O3 this compiler sees overlapping copies in plain joins of texts where there are none.
    target_compile_options(ruvo_options INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()

# The rooms and what each may use.
set(rooms ${CMAKE_CURRENT_LIST_DIR}/rooms.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${rooms})
file(STRINGS ${rooms} rows REGEX "^[a-z]")
foreach(row IN LISTS rows)
    string(REGEX MATCHALL "[^ ]+" words "${row}")
    list(POP_FRONT words room folder)
    set(RUVO_${room}_MAY_USE "${words}")
    if(folder STREQUAL "src/${room}")
        list(APPEND RUVO_ROOMS_OF_SRC ${room})
    endif()
endforeach()

# ruvo_room(NAME SOURCES file...): one static library per room, linked with the rooms that it may use; a call to any
# other room then fails at link time.
function(ruvo_room name)
    if(NOT DEFINED RUVO_${name}_MAY_USE)
        message(FATAL_ERROR "ruvo_room: cmake/rooms.txt has no room ${name}")
    endif()
    cmake_parse_arguments(ROOM "" "" "SOURCES" ${ARGN})
    add_library(ruvo_${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(ruvo_${name} PUBLIC ruvo_options)
    foreach(used IN LISTS RUVO_${name}_MAY_USE)
        # (One room is there on Windows alone, another is but a header.)
        if(NOT used STREQUAL api AND (WIN32 OR NOT used STREQUAL com))
            target_link_libraries(ruvo_${name} PUBLIC ruvo_${used})
        endif()
    endforeach()
endfunction()
