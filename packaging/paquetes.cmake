# Debian packages by cpack: packaging/empaquetar builds both.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME telvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Telvane <servicio.tecnico@veltra.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://www.veltra.example/telvane")
# Each package has a description of its own, whose first line is the summary.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
# The settings of the nightly download stand outside the prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
 OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL telvane-cli telvane-historico)
if(TELVANE_VENTANA)
 list(APPEND CPACK_COMPONENTS_ALL telvane)
endif()
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_TELVANE_PACKAGE_NAME telvane)
set(CPACK_DEBIAN_TELVANE_DESCRIPTION "companion of a weather-station data logger
Telvane finds the data logger of an automatic weather station on a serial
port, shows its live readings, reads and changes its configuration, downloads
its memory and turns it into files that a spreadsheet opens.

This package holds the window. Its texts are in Spanish.")
set(CPACK_DEBIAN_TELVANE_PACKAGE_DEPENDS "qt6-translations-l10n, hicolor-icon-theme")
set(CPACK_DEBIAN_TELVANE_PACKAGE_RECOMMENDS "qt6-wayland, xdg-utils, libsystemd0")
set(CPACK_DEBIAN_TELVANE_PACKAGE_SUGGESTS "telvane-cli, telvane-historico")

set(CPACK_DEBIAN_TELVANE-CLI_PACKAGE_NAME telvane-cli)
set(CPACK_DEBIAN_TELVANE-CLI_DESCRIPTION "weather-station data logger from the console
Finds the data logger of an automatic weather station on a serial port, shows
its readings, reads and changes its configuration, downloads its memory and
turns it into files that a spreadsheet opens, all without a display.

This package holds the console tool, the timer of a nightly download, which is
off until it is enabled, and a simulated logger for trying things out. Their
texts are in Spanish.")
set(CPACK_DEBIAN_TELVANE-CLI_PACKAGE_DEPENDS "adduser")
set(CPACK_DEBIAN_TELVANE-CLI_PACKAGE_RECOMMENDS "bash-completion, libsystemd0")
set(CPACK_DEBIAN_TELVANE-CLI_PACKAGE_SUGGESTS "telvane, telvane-historico")

set(CPACK_DEBIAN_TELVANE-HISTORICO_PACKAGE_NAME telvane-historico)
set(CPACK_DEBIAN_TELVANE-HISTORICO_DESCRIPTION "archive of weather-station data logger downloads
Keeps the memory images of the data loggers of many weather stations, and
their samples, for years: in one SQLite file, or in a PostgreSQL data base.
Images may come twice and in any order.

This package holds the archive's program. Its texts are in Spanish.")
# Loaded only when a postgresql:// is named.
set(CPACK_DEBIAN_TELVANE-HISTORICO_PACKAGE_RECOMMENDS "bash-completion, libpq5, xdg-utils")
set(CPACK_DEBIAN_TELVANE-HISTORICO_PACKAGE_SUGGESTS "telvane-cli, postgresql")

file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/conffiles "/etc/default/telvane-descarga\n")
set(CPACK_DEBIAN_TELVANE-CLI_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/conffiles)
foreach(TELVANE_PAQUETE telvane-cli telvane-historico)
  string(TOUPPER ${TELVANE_PAQUETE} TELVANE_EN_CPACK)
  foreach(TELVANE_GUION postinst prerm postrm)
    list(APPEND CPACK_DEBIAN_${TELVANE_EN_CPACK}_PACKAGE_CONTROL_EXTRA
      ${CMAKE_CURRENT_SOURCE_DIR}/debian/${TELVANE_PAQUETE}/${TELVANE_GUION})
  endforeach()
endforeach()
include(CPack)
