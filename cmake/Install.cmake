# `cmake --install` (prefix /usr/local by default) and `cpack -G DEB`: the
# program, its catalogues (po/), its pictures, the desktop entry, the
# AppStream metainfo and the manual page, laid out the freedesktop way.
#
# An installed program finds its read-only files from its own path
# (<exe dir>/../share/...), so the prefix can be anything, and keeps its data
# under $XDG_DATA_HOME/Cadrelle.

set(CADRELLE_HOMEPAGE "https://github.com/vantrel/cadrelle" CACHE STRING "Project home page, for the metainfo and the package")
set(CADRELLE_SCREENSHOT_URL "https://raw.githubusercontent.com/vantrel/cadrelle/main/docs/images/main-window.png"
    CACHE STRING "Published address of docs/images/main-window.png")

install(TARGETS cadrelle RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The application icon in the hicolor theme: the drawn sizes and the SVG.
set(icon_dir ${CMAKE_SOURCE_DIR}/assets/icons)
foreach(size 16 24 32 48 64 128 256)
  if(EXISTS ${icon_dir}/cadrelle-${size}.png)
    install(FILES ${icon_dir}/cadrelle-${size}.png DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
            RENAME cadrelle.png)
  endif()
endforeach()
if(EXISTS ${icon_dir}/cadrelle.svg)
  install(FILES ${icon_dir}/cadrelle.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
endif()
# The window's own pictures (tools, lock key), looked up in share/cadrelle/img.
install(DIRECTORY ${icon_dir}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/cadrelle/img
        FILES_MATCHING PATTERN "*.png" PATTERN "src" EXCLUDE)

configure_file(${CMAKE_SOURCE_DIR}/packaging/com.vantrel.cadrelle.metainfo.xml.in
               ${CMAKE_BINARY_DIR}/packaging/com.vantrel.cadrelle.metainfo.xml @ONLY)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/cadrelle.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/packaging/com.vantrel.cadrelle.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/cadrelle.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The Debian package: dependencies from the libraries the program links
# (dpkg-shlibdeps), plus what it runs or loads at run time.
set(CPACK_PACKAGE_NAME cadrelle)
set(CPACK_PACKAGE_VENDOR "Vantrel")
set(CPACK_PACKAGE_CONTACT "Cadrelle maintainers <maintainers@cadrelle.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Desktop task scheduler: jobs run by time triggers")
set(CPACK_PACKAGE_DESCRIPTION "Cadrelle runs jobs (reminders, programs, scripts, backups, screenshots,\n network messages, key and mouse input, session and power actions) when\n their triggers fire: fixed times, calendar rules, intervals, idle time-outs\n and cron expressions.")
set(CPACK_PACKAGE_HOMEPAGE_URL ${CADRELLE_HOMEPAGE})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# wx's own catalogues translate the stock buttons; the CJK font shows them.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "wx3.2-i18n, fonts-wqy-microhei | fonts-noto-cjk, xdg-utils")
include(CPack)
