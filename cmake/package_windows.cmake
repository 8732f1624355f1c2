# The zip for users of Windows: programs side by side, INI files and a substation to try, and what to read.
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

set(architecture x86)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(architecture x64)
endif()
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME ruvo-${PROJECT_VERSION}-windows-${architecture})
set(CPACK_PACKAGE_VENDOR ruvo)
set(CPACK_STRIP_FILES OFF)
include(CPack)
