# Debian package of the installed files: `cpack -G DEB` in a build tree.
#
# The filter's shared-library dependencies come from dpkg-shlibdeps; the
# package also needs a CUPS scheduler to run it and the filters that turn a
# PostScript job into the PostScript that reaches this filter.
set(CPACK_PACKAGE_NAME "pstozpjl")
set(CPACK_PACKAGE_VENDOR "pstozpjl developers")
set(CPACK_PACKAGE_CONTACT "pstozpjl developers <dev@pstozpjl.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "CUPS filter for printers of the ZPJL family (PostScript in PJL)")
set(CPACK_PACKAGE_DESCRIPTION
    "pstozpjl wraps a PostScript job in the PJL job header that printers of the
ZPJL family take: secure and held print, job accounting, finishing, special
pages, perfect binding and device settings, with watermarks and separator
pages inserted into the PostScript. Sample PPDs for three printer profiles are
installed into the CUPS model directory. zpjl-printer-app presents the printers
as IPP Everywhere printers (driverless printing from phones and desktops).")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_STRIP_FILES ON)
# The manual page names the installed paths: package what it names.
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION "text")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# pstops (cups-core-drivers) and pdftops (poppler-utils) for the printer
# application's jobs.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "cups-daemon, cups-filters, cups-core-drivers, poppler-utils")
set(CPACK_DEBIAN_PACKAGE_ENHANCES "cups")

include(CPack)
