# What users of Windows get, as a zip and as a set-up program (packaging/windows/make_packages.sh): programs side by side, INI files and a substation to try, and what to read.
install(TARGETS ruvo ruvo_shared ruvoctl p32ls-sim oncrpc HalvexCryptoKit
    RUNTIME DESTINATION .
    LIBRARY DESTINATION .
    ARCHIVE DESTINATION lib)
install(FILES ${CMAKE_SOURCE_DIR}/include/ruvo/ruvo.h DESTINATION include/ruvo)

# Texts get the line ends that the system's own editor writes.
function(ruvo_package_text source name)
    configure_file(${CMAKE_SOURCE_DIR}/${source} ${CMAKE_BINARY_DIR}/package/${name} @ONLY NEWLINE_STYLE CRLF)
    install(FILES ${CMAKE_BINARY_DIR}/package/${name} DESTINATION .)
endfunction()
ruvo_package_text(packaging/windows/README.txt README.txt)
ruvo_package_text(LICENSE LICENSE.txt)
ruvo_package_text(examples/substation/substation.toml substation.toml)
ruvo_package_text(examples/substation/serial.ini RUVO.ini)
ruvo_package_text(examples/substation/modem.ini modem.ini)
ruvo_package_text(examples/substation/ethernet.ini ethernet.ini)

# As pages for a browser, which a double click opens.
find_program(RUVO_LOWDOWN lowdown)
if(RUVO_LOWDOWN)
    file(GLOB documents CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/*.md)
    set(make_page ${CMAKE_SOURCE_DIR}/packaging/windows/make_page.sh)
    foreach(document ${documents})
        get_filename_component(name ${document} NAME_WLE)
        set(page ${CMAKE_BINARY_DIR}/package/docs/${name}.html)
        add_custom_command(OUTPUT ${page}
            COMMAND sh ${make_page} ${document} ${page}
            DEPENDS ${document} ${make_page}
            VERBATIM)
        list(APPEND pages ${page})
    endforeach()
    add_custom_target(package_files ALL DEPENDS ${pages})
    install(FILES ${pages} DESTINATION docs)
endif()

# The notices of the libraries that became part of the programs come from where they were taken.
foreach(package libcli11-dev libtomlplusplus-dev)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION licences RENAME ${package}.txt)
endforeach()
