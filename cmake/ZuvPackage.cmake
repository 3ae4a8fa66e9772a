# `cpack -G DEB`: one Debian package "zuv" of the installed tree. Its run-time dependencies
# (jsoncpp's library among them) are read from zuvCli by dpkg-shlibdeps; building on the
# library needs jsoncpp's development package too, which the package recommends.
set(ZUV_PACKAGE_MAINTAINER "ZUV maintainers <zuv@example.com>"
    CACHE STRING "Maintainer field of the Debian package")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zuv)
set(CPACK_PACKAGE_CONTACT "${ZUV_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "client and core library of the ZUV host agent")
set(CPACK_PACKAGE_DESCRIPTION
    "zuvCli asks the ZUV service on a VMware ESXi host to send a test event
or an event JSON to the management processor, or to save the hardware
inventory to a file. The core library (static archives, headers, a CMake
package and a pkg-config file) is what the service is built from.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libjsoncpp-dev, pkg-config")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)

# The copyright and changelog files that Debian's policy asks of every package.
set(zuv_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_PACKAGE_NAME})
configure_file(cmake/debian/changelog.in debian/changelog @ONLY)
zuv_gzip(zuv_changelog ${PROJECT_BINARY_DIR}/debian/changelog zuv_changelog_gz)
install(FILES cmake/debian/copyright ${zuv_changelog_gz} DESTINATION ${zuv_doc_dir})
include(CPack)
