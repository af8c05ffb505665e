# Where an installation puts everything: the program folder as a whole, so that the programs find what
# lies beside them, links to the programs, and what desktops look for.

include(GNUInstallDirs)
set(folder ${CMAKE_INSTALL_LIBDIR}/vexa)

install(TARGETS vexa vexa-render RUNTIME DESTINATION ${folder})
install(DIRECTORY ${VEXA_PROGRAM_FOLDER}/ DESTINATION ${folder}
    PATTERN "vexa" EXCLUDE PATTERN "vexa-render" EXCLUDE
    # What compiling leaves behind.
    PATTERN "recent*" EXCLUDE PATTERN ".*" EXCLUDE)
install(CODE "
    file(MAKE_DIRECTORY \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR})
    foreach(program vexa vexa-render)
        file(CREATE_LINK ../${folder}/\${program}
            \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\${program} SYMBOLIC)
    endforeach()")

install(FILES data/desktop/vexa.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES data/desktop/vexa-mime.xml RENAME vexa.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.svg RENAME vexa.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.png RENAME vexa.png
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/128x128/apps)
