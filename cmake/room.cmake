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

# ruvo_room(NAME SOURCES file... USES room...): one static library per room. USES names the rooms that
# this one may call; a call to any other room then fails at link time.
function(ruvo_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;USES" ${ARGN})
    add_library(ruvo_${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(ruvo_${name} PUBLIC ruvo_options)
    foreach(used IN LISTS ROOM_USES)
        target_link_libraries(ruvo_${name} PUBLIC ruvo_${used})
    endforeach()
endfunction()
