# The program as users get it: installed into a prefix, and as a Debian package.
if(TARGET flickwell)
  set(packaging_scripts ${CMAKE_CURRENT_LIST_DIR})

  add_test(NAME desktop_entry COMMAND desktop-file-validate ${CMAKE_SOURCE_DIR}/packaging/${FLK_APP_ID}.desktop)
  add_test(NAME appstream_metadata COMMAND appstreamcli validate --no-net --strict ${FLK_METAINFO})

  add_test(NAME install_layout COMMAND ${packaging_scripts}/check-install ${CMAKE_BINARY_DIR} ${FLK_APP_ID})

  # Packs this tree the way `make package` packs the release tree. The check is
  # of the layout, so it skips what only costs time on sanitizer builds:
  # stripping, and dpkg-shlibdeps reading their relocations (half a minute).
  # `make package` checks the dependencies of the real package.
  set(package_folder ${CMAKE_BINARY_DIR}/test-package)
  add_test(NAME package_contents COMMAND sh -c
    "rm -rf '${package_folder}' && cpack --config '${CMAKE_BINARY_DIR}/CPackConfig.cmake' -B '${package_folder}' -D CPACK_STRIP_FILES=OFF -D CPACK_DEBIAN_PACKAGE_SHLIBDEPS=OFF -D CPACK_DEBIAN_COMPRESSION_TYPE=zstd >/dev/null && '${packaging_scripts}/check-package' '${package_folder}'/flickwell_*.deb && rm -rf '${package_folder}'")
  set_tests_properties(install_layout package_contents PROPERTIES TIMEOUT 300)
endif()
