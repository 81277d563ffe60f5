# Units, which name the installed programs, and the user that they run as.
foreach(unit quillet-dns-proxy quillet-relay quillet-capture)
  configure_file("systemd/${unit}.service.in" "systemd/${unit}.service" @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/systemd/${unit}.service" DESTINATION lib/systemd/system)
endforeach()
install(FILES systemd/quillet.sysusers DESTINATION lib/sysusers.d RENAME quillet.conf)
