# SPDX-License-Identifier: GPL-3.0-or-later
# The installation: programs, their content, plug-ins, and the files for desktops and the service manager.
# packaging/pages adds man pages and completions.

set(programs vexa-render)
if(VEXA_WINDOW)
    list(APPEND programs vexa)
endif()
install(TARGETS ${programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Content is installed from its sources and not from the program folder, which may also hold a person's files. By the file
# shipped-content there the programs know that they are installed, even in a writable place (kits/storage/ProgramFolder.h).
install(DIRECTORY data/functions data/sounds ${VEXA_MADE_CONTENT}/samples ${VEXA_MADE_CONTENT}/pictures
    DESTINATION ${VEXA_INSTALLED_CONTENT})
install(FILES data/demo.mid data/shipped-content DESTINATION ${VEXA_INSTALLED_CONTENT})

if(VEXA_WINDOW)
    install(DIRECTORY docs/manual DESTINATION ${VEXA_INSTALLED_CONTENT} PATTERN tools EXCLUDE)
    # What the manual's pages lead to, at the same place relative to them.
    install(FILES docs/HEADLESS.md docs/LV2.md docs/TUNING.md DESTINATION ${VEXA_INSTALLED_CONTENT})
    install(FILES docs/figures/window.png DESTINATION ${VEXA_INSTALLED_CONTENT}/figures)
    install(FILES ${VEXA_ARTWORK} DESTINATION ${VEXA_INSTALLED_CONTENT})
    set(id org.orvo.Vexa)
    install(FILES data/desktop/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
    install(FILES data/desktop/${id}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
    install(FILES data/desktop/${id}.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
    install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.svg RENAME ${id}.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
    install(FILES ${VEXA_PROGRAM_FOLDER}/vexa-icon.png RENAME ${id}.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/128x128/apps)
    # The systemd unit contains the path of the installed program.
    configure_file(data/desktop/vexa.service.in ${CMAKE_BINARY_DIR}/vexa.service @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/vexa.service DESTINATION lib/systemd/user)
endif()

if(TARGET vexa-lv2)
    set(bundle ${CMAKE_INSTALL_LIBDIR}/lv2/vexa.lv2)
    install(TARGETS vexa-lv2 LIBRARY DESTINATION ${bundle})
    if(TARGET vexa-lv2-ui)
        install(TARGETS vexa-lv2-ui LIBRARY DESTINATION ${bundle})
    endif()
    install(DIRECTORY ${CMAKE_BINARY_DIR}/lv2/vexa.lv2/ DESTINATION ${bundle} PATTERN *.so EXCLUDE)
endif()

if(TARGET vexa-clap)
    set(clap ${CMAKE_INSTALL_LIBDIR}/clap)
    install(TARGETS vexa-clap LIBRARY DESTINATION ${clap})
    if(TARGET vexa-window)
        install(TARGETS vexa-window LIBRARY DESTINATION ${clap}/vexa)
    endif()
    install(DIRECTORY ${VEXA_MADE_CONTENT}/samples ${VEXA_MADE_CONTENT}/pictures data/sounds
        DESTINATION ${clap}/vexa)
    install(FILES data/shipped-content DESTINATION ${clap}/vexa)
endif()
