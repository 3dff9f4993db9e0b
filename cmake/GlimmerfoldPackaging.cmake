# Where `cmake --install` puts Glimmerfold's files besides the program, and
# how CPack turns that tree into a Debian package.
set(GLIMMERFOLD_RESOURCES "${PROJECT_SOURCE_DIR}/resources")
set(GLIMMERFOLD_PACKAGE_VERSION "${PROJECT_VERSION}-${GLIMMERFOLD_BUILD_NUMBER}")
set(GLIMMERFOLD_DOC_DIR "${CMAKE_INSTALL_DATAROOTDIR}/doc/glimmerfold")

# Directories made while installing get 0755 whatever the umask of whoever
# builds, so the package never ships group-writable directories.
set(GLIMMERFOLD_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${GLIMMERFOLD_DIRECTORY_PERMISSIONS})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${GLIMMERFOLD_DIRECTORY_PERMISSIONS})

# Debian wants man pages and changelogs compressed with gzip -9n, which
# leaves out the time stamp so that equal inputs give equal packages.
find_program(GLIMMERFOLD_GZIP gzip REQUIRED)
function(glimmerfold_configure_gzipped template output)
    configure_file("${template}" "${output}" @ONLY)
    execute_process(COMMAND "${GLIMMERFOLD_GZIP}" -9nc "${output}"
                    OUTPUT_FILE "${output}.gz" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(GLIMMERFOLD_GENERATED_DOCS "${PROJECT_BINARY_DIR}/packaging")
glimmerfold_configure_gzipped("${GLIMMERFOLD_RESOURCES}/man/glimmerfold.1.in"
                              "${GLIMMERFOLD_GENERATED_DOCS}/glimmerfold.1")
glimmerfold_configure_gzipped("${GLIMMERFOLD_RESOURCES}/debian/changelog.in"
                              "${GLIMMERFOLD_GENERATED_DOCS}/changelog.Debian")

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
        DESTINATION "${GLIMMERFOLD_DOC_DIR}")
install(FILES "${GLIMMERFOLD_GENERATED_DOCS}/glimmerfold.1.gz"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES "${GLIMMERFOLD_RESOURCES}/debian/copyright"
              "${GLIMMERFOLD_GENERATED_DOCS}/changelog.Debian.gz"
        DESTINATION "${GLIMMERFOLD_DOC_DIR}")
install(FILES "${GLIMMERFOLD_RESOURCES}/debian/lintian-overrides"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides"
        RENAME glimmerfold)

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
# CPack puts the summary above this as the synopsis line; this is only the
# extended description.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Glimmerfold moves and resizes windows on an X11 desktop while a modifier\n\
combination is held, snaps moved windows to edges, can raise the window\n\
under the pointer, and lives in the system tray.")
# The shared libraries come from dpkg-shlibdeps. The toolkit loads its SVG
# icon and image plugins at run time, so dpkg-shlibdeps cannot see them; the
# X11 platform plugin ships in libqt6gui6 on Debian 12, which it does see.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6 (>= 6.4)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils")

include(CPack)
