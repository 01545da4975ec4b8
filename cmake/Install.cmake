# Where the filter, its manual page and the sample PPDs go.
#
# CUPS runs filters from <serverbin>/filter and offers the PPDs found under
# <datadir>/model. Both directories come from the CUPS installation: the
# variables of cups.pc where the system has one, else cups-config (Debian 12
# ships no cups.pc). A directory under /usr is installed relative to
# CMAKE_INSTALL_PREFIX (default /usr), any other one as it is; DESTDIR applies
# to both, as cmake --install and CPack set it.
include(GNUInstallDirs)

# One directory of the CUPS installation: the cups.pc variable `pc_var`, or
# the output of `cups-config <config_flag>`, or `fallback`.
function(zpjl_cups_directory out pc_var config_flag fallback)
  set(dir "")
  if(CUPS_FOUND)
    pkg_get_variable(dir cups ${pc_var})
  endif()
  if(dir STREQUAL "" AND CUPS_CONFIG)
    execute_process(COMMAND ${CUPS_CONFIG} ${config_flag}
                    OUTPUT_VARIABLE dir OUTPUT_STRIP_TRAILING_WHITESPACE
                    ERROR_QUIET)
  endif()
  if(dir STREQUAL "")
    set(dir "${fallback}")
  endif()
  # /usr/lib/cups -> lib/cups, so that the install prefix applies.
  string(REGEX REPLACE "^/usr/+" "" dir "${dir}")
  set(${out} "${dir}" PARENT_SCOPE)
endfunction()

zpjl_cups_directory(_zpjl_serverbin cups_serverbin --serverbin "/usr/lib/cups")
zpjl_cups_directory(_zpjl_datadir cups_datadir --datadir "/usr/share/cups")

set(ZPJL_CUPS_FILTER_DIR "${_zpjl_serverbin}/filter" CACHE STRING
    "Directory of the installed filter (relative: under CMAKE_INSTALL_PREFIX)")
set(ZPJL_CUPS_MODEL_DIR "${_zpjl_datadir}/model/pstozpjl" CACHE STRING
    "Directory of the installed sample PPDs (relative: under CMAKE_INSTALL_PREFIX)")

# CUPS refuses a filter that others may write to; 0755 everywhere.
set(_zpjl_exec_mode OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                    WORLD_READ WORLD_EXECUTE)
set(_zpjl_data_mode OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${_zpjl_exec_mode})

install(TARGETS pstozpjl
        RUNTIME DESTINATION "${ZPJL_CUPS_FILTER_DIR}"
        PERMISSIONS ${_zpjl_exec_mode})
# The manual page names the installed paths and the debug-copy settings of
# this build.
function(zpjl_absolute_install_dir out dir)
  if(IS_ABSOLUTE "${dir}")
    set(${out} "${dir}" PARENT_SCOPE)
  else()
    set(${out} "${CMAKE_INSTALL_PREFIX}/${dir}" PARENT_SCOPE)
  endif()
endfunction()
zpjl_absolute_install_dir(ZPJL_MAN_FILTER_DIR "${ZPJL_CUPS_FILTER_DIR}")
zpjl_absolute_install_dir(ZPJL_MAN_MODEL_DIR "${ZPJL_CUPS_MODEL_DIR}")
string(TIMESTAMP ZPJL_MAN_DATE "%Y-%m-%d" UTC)
configure_file("${CMAKE_SOURCE_DIR}/man/pstozpjl.8.in" "${CMAKE_BINARY_DIR}/man/pstozpjl.8" @ONLY)

install(FILES "${CMAKE_BINARY_DIR}/man/pstozpjl.8"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man8"
        PERMISSIONS ${_zpjl_data_mode})
# The stream inspector is a command for the people who run the printers,
# with its manual page and the schema of its JSON output.
install(TARGETS zpjl-inspect
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        PERMISSIONS ${_zpjl_exec_mode})
install(FILES "${CMAKE_SOURCE_DIR}/docs/zpjl-inspect-schema.json"
        DESTINATION "${CMAKE_INSTALL_DOCDIR}"
        PERMISSIONS ${_zpjl_data_mode})
zpjl_absolute_install_dir(ZPJL_MAN_SCHEMA "${CMAKE_INSTALL_DOCDIR}/zpjl-inspect-schema.json")
configure_file("${CMAKE_SOURCE_DIR}/man/zpjl-inspect.1.in" "${CMAKE_BINARY_DIR}/man/zpjl-inspect.1"
               @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/man/zpjl-inspect.1"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
        PERMISSIONS ${_zpjl_data_mode})

# The printer application, its manual page and its systemd unit.
set(ZPJL_MAN_SPOOL "/var/spool/zpjl-printer-app")
set(ZPJL_MAN_PSTOPS "/usr/${_zpjl_serverbin}/filter/pstops")
zpjl_absolute_install_dir(ZPJL_APP_INSTALLED_PROGRAM "${CMAKE_INSTALL_BINDIR}/zpjl-printer-app")
install(TARGETS zpjl-printer-app
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        PERMISSIONS ${_zpjl_exec_mode})
configure_file("${CMAKE_SOURCE_DIR}/man/zpjl-printer-app.8.in"
               "${CMAKE_BINARY_DIR}/man/zpjl-printer-app.8" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/man/zpjl-printer-app.8"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man8"
        PERMISSIONS ${_zpjl_data_mode})
set(ZPJL_SYSTEMD_UNIT_DIR "lib/systemd/system" CACHE STRING
    "Directory of the printer application's systemd unit (relative: under CMAKE_INSTALL_PREFIX)")
configure_file("${CMAKE_SOURCE_DIR}/cmake/zpjl-printer-app.service.in"
               "${CMAKE_BINARY_DIR}/zpjl-printer-app.service" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/zpjl-printer-app.service"
        DESTINATION "${ZPJL_SYSTEMD_UNIT_DIR}"
        PERMISSIONS ${_zpjl_data_mode})

file(GLOB ZPJL_SAMPLE_PPDS CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/ppd/*.ppd")
install(FILES ${ZPJL_SAMPLE_PPDS}
        DESTINATION "${ZPJL_CUPS_MODEL_DIR}"
        PERMISSIONS ${_zpjl_data_mode})

# The install directories and debug-copy paths for the deployment tests, which install the build
# into directories of their own and look for the files there.
file(WRITE "${CMAKE_BINARY_DIR}/install-paths.txt"
     "version=${PROJECT_VERSION}\n"
     "prefix=${CMAKE_INSTALL_PREFIX}\n"
     "filter_dir=${ZPJL_CUPS_FILTER_DIR}\n"
     "model_dir=${ZPJL_CUPS_MODEL_DIR}\n"
     "man_dir=${CMAKE_INSTALL_MANDIR}/man8\n"
     "bin_dir=${CMAKE_INSTALL_BINDIR}\n"
     "man1_dir=${CMAKE_INSTALL_MANDIR}/man1\n"
     "doc_dir=${CMAKE_INSTALL_DOCDIR}\n"
     "unit_dir=${ZPJL_SYSTEMD_UNIT_DIR}\n"
     "flag=${ZPJL_JOBCOPY_FLAG}\n"
     "legacy_pattern=${ZPJL_LEGACY_JOBCOPY_PATTERN}\n")
