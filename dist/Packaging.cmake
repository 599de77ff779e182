# How KextKeeper is installed: a desktop program on Linux (binary, desktop entry, icons,
# AppStream metainfo, man page, shell completions) packed by CPack into a .deb, and an
# application bundle on macOS. Included from the top-level CMakeLists.txt, so that it
# works on the kextkeeper target in the directory that made it.

include(GNUInstallDirs)
set(KK_DIST ${CMAKE_CURRENT_SOURCE_DIR}/dist)
set(KK_DOCS_DIR ${CMAKE_BINARY_DIR}/docs)
add_subdirectory(tools/docgen)

if(APPLE)
  # KextKeeper.app/Contents/MacOS/KextKeeper. Its settings (Info.plist, which is also the
  # bundle's own information list, and CustomKextDirs.plist) live in Contents beside it.
  file(READ ${CMAKE_CURRENT_SOURCE_DIR}/src/app/resources/Info.plist kk_settings)
  string(REGEX REPLACE ".*<dict>\n(.*)</dict>.*" "\\1" KK_SHIPPED_SETTINGS "${kk_settings}")
  set(kk_icns ${KK_DIST}/macos/KextKeeper.icns)
  target_sources(kextkeeper PRIVATE ${kk_icns})
  set_source_files_properties(${kk_icns} TARGET_DIRECTORY kextkeeper
    PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(kextkeeper PROPERTIES
    MACOSX_BUNDLE TRUE
    OUTPUT_NAME KextKeeper
    MACOSX_BUNDLE_INFO_PLIST ${KK_DIST}/macos/Info.plist.in
    MACOSX_BUNDLE_GUI_IDENTIFIER org.example.kextkeeper
    MACOSX_BUNDLE_BUNDLE_NAME KextKeeper
    MACOSX_BUNDLE_ICON_FILE KextKeeper.icns
    MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
    MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION}
    MACOSX_BUNDLE_COPYRIGHT "GPL-3.0-or-later")
  add_custom_command(TARGET kextkeeper POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different
      ${CMAKE_CURRENT_SOURCE_DIR}/src/app/resources/CustomKextDirs.plist
      $<TARGET_BUNDLE_CONTENT_DIR:kextkeeper>/CustomKextDirs.plist
    VERBATIM)
  install(TARGETS kextkeeper BUNDLE DESTINATION .)
  return()
endif()

install(TARGETS kextkeeper RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${KK_DIST}/linux/kextkeeper.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${KK_DIST}/linux/org.example.kextkeeper.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${KK_DIST}/icons/kextkeeper.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(DIRECTORY ${KK_DIST}/icons/hicolor/ DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${KK_DIST}/linux/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kextkeeper)
install(FILES ${KK_DOCS_DIR}/kextkeeper.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${KK_DOCS_DIR}/kextkeeper.bash
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kextkeeper)
install(FILES ${KK_DOCS_DIR}/_kextkeeper
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${KK_DOCS_DIR}/kextkeeper.fish
  DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# kextkeeper_<version>_<arch>.deb. Library dependencies are computed by dpkg-shlibdeps;
# what it cannot see is named: sudo runs the root commands, and Qt's platform plugins
# are loaded at run time.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kextkeeper)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The KextKeeper developers")
set(CPACK_PACKAGE_CONTACT "The KextKeeper developers <kextkeeper@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "installs kexts and rebuilds kext caches of a macOS volume")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "KextKeeper is for the administrator of a PC that boots macOS through a boot
loader which loads kernel extensions from an Extra folder. It installs kexts,
repairs kext folders, rebuilds mkext archives and kext caches, unpacks mkext
archives, inspects kexts and lists the loaded ones, in one window or through
command-line verbs. Anywhere but on a Mac it works on a simulated Mac.
.
License: GPL-3.0-or-later.")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://kextkeeper.example.org/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "sudo, qt6-qpa-plugins")
# Qt's own texts (standard buttons) in the user's language, beside our translation.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
include(CPack)
