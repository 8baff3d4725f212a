# What `cmake --install` puts on a machine: the program, the capture-stream reader, the manual
# page and the protocol notes, in the platform's usual places. Test programs, helper clients and
# benchmarks stay in the build tree.
include(GNUInstallDirs)
install(TARGETS brisko-mac-input capture-decode RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# The manual page is written in scdoc's plain-text format and turned into roff here.
find_program(SCDOC scdoc REQUIRED)
set(BRISKO_MANPAGE_SOURCE ${PROJECT_SOURCE_DIR}/docs/brisko-mac-input.1.scd)
set(BRISKO_MANPAGE ${PROJECT_BINARY_DIR}/brisko-mac-input.1)
add_custom_command(OUTPUT ${BRISKO_MANPAGE}
  COMMAND sh -c "\"$1\" < \"$2\" > \"$3\"" scdoc ${SCDOC} ${BRISKO_MANPAGE_SOURCE} ${BRISKO_MANPAGE}
  DEPENDS ${BRISKO_MANPAGE_SOURCE}
  COMMENT "Writing the manual page brisko-mac-input.1" VERBATIM)
add_custom_target(manpage ALL DEPENDS ${BRISKO_MANPAGE})
install(FILES ${BRISKO_MANPAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# The notes for host developers on the input stream and the capture stream.
install(FILES ${PROJECT_SOURCE_DIR}/docs/protocols.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
