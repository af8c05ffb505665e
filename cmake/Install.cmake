# Where an installation puts everything: a program folder, so that the programs find what lies beside them, links to the
# programs, and what desktops look for.

include(GNUInstallDirs)
set(folder ${CMAKE_INSTALL_LIBDIR}/vexa)

set(programs vexa-render)
if(VEXA_WINDOW)
    list(APPEND programs vexa)
endif()
install(TARGETS ${programs} RUNTIME DESTINATION ${folder})
# Not from the build's program folder, where a person's own may lie.
install(DIRECTORY data/functions data/sounds ${VEXA_MADE_CONTENT}/samples DESTINATION ${folder})
install(FILES data/demo.mid data/shipped-content DESTINATION ${folder})
# Tells the programs that they are installed, be it where they could write (kits/storage/ProgramFolder.h).
file(WRITE ${CMAKE_BINARY_DIR}/installed "Vexa is installed here: what you make is kept in your own folder.\n")
install(FILES ${CMAKE_BINARY_DIR}/installed DESTINATION ${folder})
install(CODE "
    file(MAKE_DIRECTORY \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR})
    foreach(program ${programs})
        file(CREATE_LINK ../${folder}/\${program}
            \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\${program} SYMBOLIC)
    endforeach()")

if(VEXA_WINDOW)
    install(FILES ${VEXA_ARTWORK} DESTINATION ${folder})
    install(FILES data/desktop/vexa.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES data/desktop/vexa-mime.xml RENAME vexa.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
    install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.svg RENAME vexa.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
    install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.png RENAME vexa.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/128x128/apps)
endif()

if(TARGET vexa-lv2)
    set(bundle ${CMAKE_INSTALL_LIBDIR}/lv2/vexa.lv2)
    install(TARGETS vexa-lv2 LIBRARY DESTINATION ${bundle})
    install(DIRECTORY ${CMAKE_BINARY_DIR}/lv2/vexa.lv2/ DESTINATION ${bundle} FILES_MATCHING PATTERN *.ttl)
    install(DIRECTORY ${VEXA_MADE_CONTENT}/samples DESTINATION ${bundle})
    install(FILES data/shipped-content DESTINATION ${bundle})
endif()
