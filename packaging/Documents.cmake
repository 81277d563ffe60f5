# The documents for administrators, and what a Debian package says about itself.
install(FILES
    "${CMAKE_SOURCE_DIR}/docs/applications.md"
    "${CMAKE_SOURCE_DIR}/docs/control.md"
    "${CMAKE_SOURCE_DIR}/docs/deploy.md"
    "${CMAKE_SOURCE_DIR}/docs/desktop.md"
    "${CMAKE_SOURCE_DIR}/docs/log.md"
    "${CMAKE_SOURCE_DIR}/docs/loopback-only.conf"
    "${CMAKE_SOURCE_DIR}/docs/relay.md"
    "${CMAKE_SOURCE_DIR}/docs/settings.md"
    "${CMAKE_SOURCE_DIR}/docs/troubleshooting.md"
    debian/copyright
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES "${CMAKE_SOURCE_DIR}/examples/vendor-data.json" DESTINATION "${CMAKE_INSTALL_DOCDIR}/examples")
install(FILES debian/lintian-overrides DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" RENAME quillet)

configure_file(debian/changelog.in debian/changelog @ONLY)
set(changelog "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz")
add_custom_command(OUTPUT "${changelog}"
  COMMAND bash -c "gzip -9n <\"$1\" >\"$2\"" changelog "${CMAKE_CURRENT_BINARY_DIR}/debian/changelog" "${changelog}"
  DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/debian/changelog"
  VERBATIM)
add_custom_target(changelog ALL DEPENDS "${changelog}")
install(FILES "${changelog}" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
