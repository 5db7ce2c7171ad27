# Installs like any desktop program: programs in bin/, their resources in
# share/flickwell/ (found relative to the program), and the desktop entry,
# MIME type, icons and AppStream metadata where desktops look for them.
# `cpack -G DEB` in a build tree makes the Debian package.
include(GNUInstallDirs)

# The day the release named by the project's VERSION was made.
set(FLK_RELEASE_DATE 2026-11-25)
set(FLK_METAINFO ${CMAKE_BINARY_DIR}/packaging/${FLK_APP_ID}.metainfo.xml)
configure_file(${CMAKE_SOURCE_DIR}/packaging/${FLK_APP_ID}.metainfo.xml.in ${FLK_METAINFO} @ONLY)

# Everything the install rules below copy out of the build tree.
add_custom_target(flk_installable)
add_dependencies(flk_installable flickwell flickwell-cli flk_content flk_tutorial flk_icons)

install(TARGETS flickwell flickwell-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The programs look for share/flickwell beside their bin/ folder.
install(DIRECTORY ${CMAKE_BINARY_DIR}/share/flickwell/ DESTINATION ${CMAKE_INSTALL_DATADIR}/flickwell)
install(DIRECTORY ${FLK_ICON_FOLDER}/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/${FLK_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/${FLK_APP_ID}.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${FLK_METAINFO} DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME flickwell)
set(CPACK_PACKAGE_VENDOR "The Flickwell developers")
# Debian's Maintainer field; whoever publishes a package sets their own.
set(FLK_PACKAGE_MAINTAINER "The Flickwell developers <flickwell@localhost>" CACHE STRING "Maintainer of the Debian package")
set(CPACK_PACKAGE_CONTACT "${FLK_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Short promotional videos of apps")
set(CPACK_PACKAGE_DESCRIPTION
  "Drops screen recordings into device mock-ups whose screens are warped in perspective, arranges them on a timeline with transitions and exports H.264 MP4 videos or animated GIFs.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
# Dependencies are read off the programs' shared libraries by dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The desktop program draws with OpenGL through Mesa on most machines.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libgl1-mesa-dri, libegl-mesa0")
include(CPack)
