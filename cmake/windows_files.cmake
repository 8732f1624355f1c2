# What the files of a Windows build have that others lack: names of exports from a definition file, and a version.

# ruvo_exports(TARGET FILE.def): the target exports what the file lists, under those very names.
function(ruvo_exports target definitions)
    target_link_options(${target} PRIVATE ${definitions})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${definitions})
endfunction()

# ruvo_version(TARGET DESCRIPTION): version resource and manifest.
function(ruvo_version target description)
    get_target_property(type ${target} TYPE)
    set(file_type 0x2) # a library
    if(type STREQUAL EXECUTABLE)
        set(file_type 0x1)
    endif()
    set(resource ${CMAKE_BINARY_DIR}/resources/${target}.rc)
    set(manifest ${CMAKE_BINARY_DIR}/resources/windows.manifest)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/windows.manifest.in ${manifest} @ONLY)
    set_property(SOURCE ${resource} PROPERTY OBJECT_DEPENDS ${manifest})
    target_sources(${target} PRIVATE ${resource})
endfunction()
