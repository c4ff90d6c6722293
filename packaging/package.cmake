# The Debian packages: `cpack -G DEB` in a build directory makes those of its machine, tavrik and (with tavrikctl)
# tavrik-tools.
# Debian wants its documents compressed, without a time in them.
set(compressed ${CMAKE_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${compressed})
foreach(pair "packaging/changelog:changelog.gz" "docs/tavrik.8:tavrik.8.gz"
        "docs/tavrikctl.1:tavrikctl.1.gz")
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 from)
  list(GET pair 1 to)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${from})
  execute_process(COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/${from} OUTPUT_FILE ${compressed}/${to}
                  COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# Packing needs what it packs alone, not the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
install(TARGETS tavrik RUNTIME DESTINATION sbin COMPONENT daemon)
install(FILES packaging/tavrik.service DESTINATION lib/systemd/system COMPONENT daemon)
install(FILES packaging/journald.conf DESTINATION lib/systemd/journald@tavrik.conf.d RENAME tavrik.conf
        COMPONENT daemon)
install(FILES ${compressed}/tavrik.8.gz DESTINATION share/man/man8 COMPONENT daemon)
install(FILES packaging/copyright ${compressed}/changelog.gz docs/guide.html DESTINATION share/doc/tavrik
        COMPONENT daemon)
set(CPACK_COMPONENTS_ALL daemon)
if(TAVRIK_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
  install(TARGETS tavrikctl RUNTIME DESTINATION bin COMPONENT tools)
  install(FILES ${compressed}/tavrikctl.1.gz DESTINATION share/man/man1 COMPONENT tools)
  install(FILES packaging/tavrikctl.bash DESTINATION share/bash-completion/completions RENAME tavrikctl
          COMPONENT tools)
  install(FILES packaging/copyright ${compressed}/changelog.gz docs/protocol.md docs/wireshark/tavrik.lua
          DESTINATION share/doc/tavrik-tools COMPONENT tools)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_NAME tavrik)
set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME tavrik)
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tavrik-tools)
set(CPACK_PACKAGE_VERSION ${TAVRIK_VERSION})
set(CPACK_PACKAGE_CONTACT "The tavrik developers <tavrik@users.noreply.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_COMPONENT_DAEMON_DESCRIPTION
    "console daemon of a networked keyboard, video and mouse wall
tavrik runs at the console of a wall of screens. It reads the console's
keyboards, mice and touch panel and forwards keys, pointer and wheel over UDP
to the input box that is now controlled; when the pointer leaves a screen's
edge, control passes on to the neighbour.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "check settings and command consoles of a keyboard, video and mouse wall
tavrikctl tells every mistake in the settings file of a tavrik console before
the console is started with it, mends the file and draws the wall that it
describes. It sends commands to consoles, asks for their devices, and tells
datagrams in words. A dissector for Wireshark lies beside it.")
set(CPACK_DEBIAN_DAEMON_PACKAGE_RECOMMENDS net-tools)
set(CPACK_DEBIAN_DAEMON_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/postinst ${CMAKE_SOURCE_DIR}/packaging/prerm
    ${CMAKE_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
  install(FILES packaging/lintian-overrides DESTINATION share/lintian/overrides RENAME tavrik COMPONENT daemon)
  if(TAVRIK_TOOLS)
    install(FILES packaging/lintian-overrides-tools DESTINATION share/lintian/overrides RENAME tavrik-tools
            COMPONENT tools)
  endif()
else()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
