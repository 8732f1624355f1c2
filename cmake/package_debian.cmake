# The Debian package: programs and modules side by side in a folder of their own, with links where shells look. What
# systems and people find elsewhere: units, manual pages, completion, documentation, examples, /etc/ruvo.
set(linux_files ${CMAKE_SOURCE_DIR}/packaging)
set(private usr/lib/ruvo)
set(documentation usr/share/doc/ruvo)
set(examples ${documentation}/examples)
set(made ${CMAKE_BINARY_DIR}/package) # what has no file in the source tree
file(MAKE_DIRECTORY ${made}/links ${made}/man)

install(TARGETS ruvo ruvoctl RUNTIME DESTINATION ${private})
install(TARGETS ruvo_shared oncrpc LIBRARY DESTINATION ${private})
# Not beside the program, where it would be taken for a real comms server.
install(TARGETS p32ls HalvexCryptoKit LIBRARY DESTINATION ${private}/simulator)
install(PROGRAMS ${linux_files}/linux/run-site DESTINATION ${private})
foreach(program ruvo ruvoctl)
    file(CREATE_LINK ../lib/ruvo/${program} ${made}/links/${program} SYMBOLIC)
    install(FILES ${made}/links/${program} DESTINATION usr/bin)
endforeach()
install(FILES ${CMAKE_SOURCE_DIR}/include/ruvo/ruvo.h DESTINATION usr/include/ruvo)
# What is stripped keeps a section that says which compiler was used.
install(CODE "if(CMAKE_INSTALL_DO_STRIP)
    foreach(file ruvo ruvoctl libruvo.so oncrpc.so simulator/p32ls.so simulator/HalvexCryptoKit.so)
        execute_process(COMMAND ${CMAKE_STRIP} --remove-section=.comment \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${private}/\${file}
            COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endif()")

install(FILES ${linux_files}/systemd/ruvo@.service ${linux_files}/systemd/ruvo@.timer DESTINATION lib/systemd/system)
install(FILES ${linux_files}/systemd/sysusers.conf DESTINATION usr/lib/sysusers.d RENAME ruvo.conf)
install(FILES ${linux_files}/systemd/tmpfiles.conf DESTINATION usr/lib/tmpfiles.d RENAME ruvo.conf)
install(FILES ${linux_files}/linux/registry.ini DESTINATION etc/ruvo)

# What names the version for people to read or copy names this one.
foreach(row IN ITEMS "packaging/debian/changelog|ruvo (${PROJECT_VERSION}-" "packaging/fleet/site.yaml|image: ruvo:${PROJECT_VERSION}\n"
        "packaging/container/Containerfile|-t ruvo:${PROJECT_VERSION} " "docs/fleet.md|-t ruvo:${PROJECT_VERSION} "
        "docs/windows.md|> ruvo-${PROJECT_VERSION}-x64-setup.exe /S\n")
    string(REPLACE "|" ";" row "${row}")
    list(GET row 0 file)
    list(GET row 1 words)
    file(READ ${CMAKE_SOURCE_DIR}/${file} text)
    string(FIND "${text}" "${words}" place)
    if(place EQUAL -1)
        message(FATAL_ERROR "${file}: not of version ${PROJECT_VERSION}: want \"${words}\"")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${file})
endforeach()

# What is made when the package is packed.
find_program(RUVO_LOWDOWN lowdown)
set(pages)
set(page_sources ruvo.1 ruvoctl.1 ruvo.ini.5 ruvo-log.5 day-file-format exports visit-records substation-file)
set(page_names ruvo.1 ruvoctl.1 ruvo.ini.5 ruvo-log.5 ruvo-events.5 ruvo-exports.5 ruvo-visits.5 ruvo-substation.5)
file(STRINGS ${linux_files}/debian/changelog changes REGEX "^ -- ")
list(GET changes 0 latest)
string(REGEX REPLACE "^.*>  " "" latest "${latest}")
if(RUVO_LOWDOWN)
    foreach(source name IN ZIP_LISTS page_sources page_names)
        string(REGEX REPLACE "^.*\\." "" section ${name})
        set(page ${made}/man/${name}.gz)
        add_custom_command(OUTPUT ${page}
            COMMAND sh ${linux_files}/linux/make_man_page.sh ${PROJECT_VERSION} "${latest}"
                ${CMAKE_SOURCE_DIR}/docs/${source}.md ${made}/man/${name}
            COMMAND gzip -9nf ${made}/man/${name}
            DEPENDS ${CMAKE_SOURCE_DIR}/docs/${source}.md ${linux_files}/linux/make_man_page.sh
                ${linux_files}/debian/changelog
            VERBATIM)
        list(APPEND pages ${page})
        install(FILES ${page} DESTINATION usr/share/man/man${section})
    endforeach()
endif()
set(completion ${made}/ruvoctl.bash)
if(CMAKE_CROSSCOMPILING)
    # The program that writes it runs elsewhere; what it writes is the same everywhere.
    set(completion ${CMAKE_SOURCE_DIR}/build/release/package/ruvoctl.bash)
else()
    add_custom_command(OUTPUT ${completion}
        COMMAND make_command_pages completion >${completion}
        DEPENDS make_command_pages)
endif()
set(changelog ${made}/changelog.Debian.gz)
add_custom_command(OUTPUT ${changelog}
    COMMAND gzip -9nc ${linux_files}/debian/changelog >${changelog}
    DEPENDS ${linux_files}/debian/changelog)
# The notices of the libraries whose headers became part of the programs come from where they were taken.
set(copyright ${made}/copyright)
set(notices ${linux_files}/debian/copyright /usr/share/doc/libcli11-dev/copyright
    /usr/share/doc/libtomlplusplus-dev/copyright)
add_custom_command(OUTPUT ${copyright}
    COMMAND cat ${notices} >${copyright}
    DEPENDS ${linux_files}/debian/copyright)
# Only packaging needs this, and builds it first.
add_custom_target(package_files DEPENDS ${pages} ${completion} ${changelog} ${copyright})
add_dependencies(package_files ruvo ruvoctl ruvo_shared oncrpc p32ls HalvexCryptoKit)

install(FILES ${linux_files}/linux/ruvo.bash DESTINATION usr/share/bash-completion/completions RENAME ruvo)
install(FILES ${completion} DESTINATION usr/share/bash-completion/completions RENAME ruvoctl)
install(FILES ${copyright} ${changelog} DESTINATION ${documentation})
install(FILES ${linux_files}/debian/lintian-overrides DESTINATION usr/share/lintian/overrides RENAME ruvo)
file(GLOB documents ${CMAKE_SOURCE_DIR}/docs/*.md)
install(FILES ${documents} DESTINATION ${documentation})
install(FILES ${linux_files}/linux/site.ini DESTINATION ${examples})
install(DIRECTORY ${linux_files}/fleet ${linux_files}/container ${linux_files}/prometheus DESTINATION ${examples})
install(PROGRAMS ${linux_files}/after-visit.d/mail ${linux_files}/after-visit.d/webhook
    DESTINATION ${examples}/after-visit.d)
install(FILES ${CMAKE_SOURCE_DIR}/examples/c/check_relay.c ${CMAKE_SOURCE_DIR}/examples/c/scramble.c DESTINATION ${examples}/c)
install(PROGRAMS ${CMAKE_SOURCE_DIR}/examples/python/ruvo_library.py DESTINATION ${examples}/python)
install(FILES ${linux_files}/linux/simulator.ini DESTINATION ${examples}/simulator RENAME registry.ini)
install(FILES ${linux_files}/linux/demo.env ${CMAKE_SOURCE_DIR}/examples/substation/substation.toml
    DESTINATION ${examples}/simulator)
foreach(link serial modem ethernet)
    file(READ ${CMAKE_SOURCE_DIR}/examples/substation/${link}.ini text)
    string(REPLACE "EventRootDir=events" "EventRootDir=/var/lib/ruvo/demo" text "${text}")
    string(REPLACE "ErrorLogPathname=RUVO_Errors.log" "ErrorLogPathname=/var/log/ruvo/demo.log" text "${text}")
    file(WRITE ${made}/simulator/${link}.ini "${text}")
    install(FILES ${made}/simulator/${link}.ini DESTINATION ${examples}/simulator)
endforeach()

set(RUVO_PACKAGE_CONTACT "ruvo packagers <packagers@ruvo.invalid>" CACHE STRING "Who answers for the package")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ruvo)
set(CPACK_PACKAGE_VENDOR ruvo)
set(CPACK_PACKAGING_INSTALL_PREFIX /)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${RUVO_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# (The libraries that the programs are linked with are added by dpkg-shlibdeps.)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What makes the user and the folders; a container needs no more of systemd than that.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "systemd-standalone-sysusers | systemd, systemd-standalone-tmpfiles | systemd")
if(CMAKE_CROSSCOMPILING)
    # dpkg knows no library of that machine: the same versions are needed as by the package of this one.
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS OFF)
    set(CPACK_DEBIAN_PACKAGE_DEPENDS "$ENV{RUVO_DEPENDS}")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${RUVO_DEBIAN_ARCHITECTURE})
endif()
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "bash-completion")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "unattended extractor of event records from protection relays")
set(CPACK_PACKAGE_DESCRIPTION
"ruvo reads one INI file, visits every relay that it lists (serial port, modem
line or Ethernet tunnel) through a comms server, and appends the relays' event
records to one day file per relay and UTC day. Every problem becomes one line
in an error log; a relay that fails never stops the others.
.
This package also has ruvoctl, which creates, edits and checks INI files, tests
relays, shows day files as text, JSON, CSV and a page for any browser,
archives and searches them, and reports the state of a site to a monitoring
system; a library for other programs, units that visit sites every night, and
a simulated substation to try everything with. The comms server that
connects to real relays comes from elsewhere.")
set(scripts ${linux_files}/debian)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${scripts}/conffiles ${scripts}/postinst ${scripts}/prerm ${scripts}/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
