# scripts/package makes it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillet)
set(CPACK_PACKAGE_VENDOR Quillet)
set(CPACK_PACKAGE_CONTACT "Quillet <${QUILLET_ADMIN_EMAIL}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "DNS proxy and relay service of managed desktops")
set(CPACK_PACKAGE_DESCRIPTION
"The proxy takes every DNS query that an application sends, decides which
server answers it, adds the identity of organisation, user and application to
queries for the filtering service, and writes the answer back.
.
The relay keeps what proxy and desktop application tell it. The services are
installed, neither enabled nor started: see /usr/share/doc/quillet/deploy.md.")
set(CPACK_SET_DESTDIR ON)  # vendor-data.json lies outside the prefix
set(CPACK_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers")
# nft for quillet-capture, dig for the relay's lookup, zsh and killall for its flush.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "bind9-dnsutils, nftables, psmisc, zsh")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debian "${CMAKE_CURRENT_SOURCE_DIR}/debian")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  "${debian}/conffiles" "${debian}/postinst" "${debian}/prerm" "${debian}/postrm")
include(CPack)
