# What the files of a Windows build have that others lack: names of exports from a definition file, a version, and messages.

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

# ruvo_messages(TARGET FILE.mc): the texts of its entries in the system's event log.
function(ruvo_messages target messages)
    get_filename_component(name ${messages} NAME_WE)
    set(resources ${CMAKE_BINARY_DIR}/resources)
    file(MAKE_DIRECTORY ${resources})
    add_custom_command(OUTPUT ${resources}/${name}.rc
        COMMAND ${RUVO_MINGW}-windmc -h ${resources} -r ${resources} ${messages}
        DEPENDS ${messages}
        VERBATIM)
    set_property(SOURCE ${resources}/${name}.rc PROPERTY COMPILE_OPTIONS --include-dir=${resources})
    target_sources(${target} PRIVATE ${resources}/${name}.rc)
endfunction()
