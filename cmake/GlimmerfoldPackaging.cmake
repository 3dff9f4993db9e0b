# Where `cmake --install` puts Glimmerfold's files besides the program, and
# how CPack turns that tree into a Debian package.
set(GLIMMERFOLD_RESOURCES "${PROJECT_SOURCE_DIR}/resources")

install(FILES "${GLIMMERFOLD_RESOURCES}/glimmerfold.desktop"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/applications")
install(FILES "${GLIMMERFOLD_RESOURCES}/icons/glimmerfold.svg"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/icons/hicolor/scalable/apps")
install(FILES "${GLIMMERFOLD_RESOURCES}/icons/glimmerfold-tray.svg"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/icons/hicolor/scalable/status")
install(FILES "${GLIMMERFOLD_RESOURCES}/invalid.glimmerfold.Glimmerfold.metainfo.xml"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/metainfo")
# The page the program opens to explain the X11-session requirement.
install(FILES "${GLIMMERFOLD_RESOURCES}/help/x11-session.html"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/glimmerfold")

set(CPACK_PACKAGE_NAME "glimmerfold")
set(CPACK_PACKAGE_VENDOR "Glimmerfold")
set(CPACK_PACKAGE_CONTACT "Glimmerfold maintainers <maintainers@glimmerfold.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_INSTALL_DIRECTORY "glimmerfold")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_GENERATOR "DEB")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${GLIMMERFOLD_BUILD_NUMBER}")
set(CPACK_DEBIAN_PACKAGE_SECTION "x11")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${PROJECT_HOMEPAGE_URL}")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Move and resize windows with modifier keys\n\
Glimmerfold moves and resizes windows on an X11 desktop while a modifier\n\
combination is held, snaps moved windows to edges, can raise the window\n\
under the pointer, and lives in the system tray.")
# The shared libraries come from dpkg-shlibdeps; the toolkit's plugins it
# loads at run time (X11 platform, SVG icons) are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6gui6 (>= 6.4), libqt6svg6 (>= 6.4)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils")

include(CPack)
