# Every completion of completions/, where its shell looks for it.
file(GLOB bash CONFIGURE_DEPENDS completions/bash/*)
file(GLOB zsh CONFIGURE_DEPENDS completions/zsh/*)
file(GLOB fish CONFIGURE_DEPENDS completions/fish/*)
install(FILES ${bash} DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")
install(FILES ${zsh} DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions")
install(FILES ${fish} DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d")
