# Installing Nebro the way a Linux desktop expects (binary, data files, menu entry, icons,
# AppStream metadata, man page) and building its Debian package with `cpack -G DEB`.
include(GNUInstallDirs)
# Installing and packaging take what the build made; they do not start a build of every test.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# The release this tree describes; the metadata and the Debian changelog carry it.
set(NEBRO_RELEASE_DATE 2026-11-24)
set(NEBRO_RELEASE_DATE_RFC2822 "Tue, 24 Nov 2026 00:00:00 +0000")
set(NEBRO_APP_ID io.github.nebro.Nebro)
set(NEBRO_PACKAGE_MAINTAINER "Nebro maintainers <maintainers@users.noreply.c-seed-083c2475.example>"
    CACHE STRING "Maintainer named in the Debian package")

# An installed binary finds its data files relative to its own folder, so the install can be
# moved as a whole (cmake --install --prefix P); the build folder's binary uses the source tree.
file(RELATIVE_PATH NEBRO_INSTALLED_RESOURCES ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/nebro)
file(RELATIVE_PATH NEBRO_INSTALLED_ICONS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/icons)
set_source_files_properties(${CMAKE_SOURCE_DIR}/src/common/install_paths.cpp PROPERTIES COMPILE_DEFINITIONS
  "NEBRO_INSTALLED_RESOURCES=\"${NEBRO_INSTALLED_RESOURCES}\";NEBRO_INSTALLED_ICONS=\"${NEBRO_INSTALLED_ICONS}\";NEBRO_SOURCE_RESOURCES=\"${CMAKE_SOURCE_DIR}/resources\"")
set_source_files_properties(${CMAKE_SOURCE_DIR}/src/app/version_report_gtk.cpp PROPERTIES COMPILE_DEFINITIONS
  "NEBRO_VERSION=\"${PROJECT_VERSION}\"")

set(NEBRO_DEB_VERSION ${PROJECT_VERSION}-1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${NEBRO_PACKAGE_MAINTAINER}")
set(gen ${CMAKE_BINARY_DIR}/packaging)
configure_file(${CMAKE_CURRENT_LIST_DIR}/${NEBRO_APP_ID}.metainfo.xml.in ${gen}/${NEBRO_APP_ID}.metainfo.xml @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/nebro.1 ${gen}/nebro.1 @ONLY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.Debian.in ${gen}/changelog.Debian @ONLY)

# Debian wants manuals and changelogs compressed, without a time stamp (gzip -n).
find_program(NEBRO_GZIP gzip REQUIRED)
foreach(name nebro.1 changelog.Debian)
  add_custom_command(OUTPUT ${gen}/${name}.gz
    COMMAND ${NEBRO_GZIP} -9 -n -c ${gen}/${name} > ${gen}/${name}.gz
    DEPENDS ${gen}/${name} VERBATIM)
endforeach()
add_custom_target(nebro_packaging_files ALL DEPENDS ${gen}/nebro.1.gz ${gen}/changelog.Debian.gz)

install(TARGETS nebro nebro-markdown-pdf RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_SOURCE_DIR}/resources/typewriter_key.wav ${CMAKE_SOURCE_DIR}/resources/typewriter_return.wav
  DESTINATION ${CMAKE_INSTALL_DATADIR}/nebro)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/resources/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/nebro.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${gen}/${NEBRO_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${gen}/nebro.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${gen}/changelog.Debian.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/nebro)

# The Debian package. Run `cpack -G DEB` in the build folder.
set(CPACK_PACKAGE_NAME nebro)
set(CPACK_PACKAGE_VENDOR "The Nebro developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "fast, themed text editor")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION editors)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The summary line comes from CPACK_PACKAGE_DESCRIPTION_SUMMARY.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Nebro is a single-window text editor built on GTK 3, the Scintilla
editing component and the Lexilla lexers. It opens big files fast,
refuses binary files, reads UTF-8 and UTF-16, keeps each file's line
endings and always saves UTF-8.
.
It highlights C, C++, C#, JavaScript, TypeScript, Python, HTML, PHP,
XML, SVG, CSS, SCSS, Less, batch files and Markdown, offers six colour
themes, a read-only viewer for very large files, printing with a
preview, and export to HTML, RTF, plain text and PDF, also from the
command line.")
# The libraries it links come from dpkg-shlibdeps; Scintilla and Lexilla are loaded at run time
# from the scite package, which the shared-library scan cannot see.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "scite (>= 5.3)")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xvfb")
# The menu, icon and MIME caches are refreshed by the dpkg triggers of desktop-file-utils,
# gtk-update-icon-cache and shared-mime-info, so the package needs no maintainer scripts.
include(CPack)
