# Cross-building for Windows with the GNU compiler. RUVO_MINGW names the target; the compilers with threads of
# the C++ library ("posix") are the ones that have std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${RUVO_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${RUVO_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${RUVO_MINGW}-windres)

# Nothing is taken from the building system but programs, and headers that a project names one by one.
set(CMAKE_FIND_ROOT_PATH /usr/${RUVO_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE BOTH)

# This compiler sees overlapping copies in plain joins of texts where there are none.
set(CMAKE_CXX_FLAGS_INIT -Wno-restrict)

# No runtime library beside the system's own, no symbols in what is shipped, and no time of the build: the same source
# makes the same bytes.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -s -Wl,--no-insert-timestamp")
endforeach()
