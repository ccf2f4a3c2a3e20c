# Everything a system-wide install holds besides the program and the desktop files in data/:
# the manual page and shell completions (written by the program itself from its command
# table), the package's own documents, and the Debian package that CPack makes of it all
# (scripts/package.sh).
include(GNUInstallDirs)

# The manual page and completions come from the built program, so they never drift from
# `brimvale help`.
set(BV_DOCS_DIR ${CMAKE_BINARY_DIR}/generated-docs)
set(BV_DOCS ${BV_DOCS_DIR}/brimvale.1.gz ${BV_DOCS_DIR}/brimvale.bash ${BV_DOCS_DIR}/_brimvale ${BV_DOCS_DIR}/brimvale.fish)
add_custom_command(OUTPUT ${BV_DOCS}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${BV_DOCS_DIR}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:brimvale> -DOUT=${BV_DOCS_DIR} -P ${CMAKE_CURRENT_LIST_DIR}/GenerateDocs.cmake
    DEPENDS brimvale ${CMAKE_CURRENT_LIST_DIR}/GenerateDocs.cmake
    COMMENT "Writing the manual page and shell completions"
    VERBATIM)
add_custom_target(brimvale_docs ALL DEPENDS ${BV_DOCS})

install(FILES ${BV_DOCS_DIR}/brimvale.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${BV_DOCS_DIR}/brimvale.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME brimvale)
install(FILES ${BV_DOCS_DIR}/_brimvale DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
install(FILES ${BV_DOCS_DIR}/brimvale.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# The package's documents. The changelog's top entry takes the version from project() and the
# date from the newest release in the AppStream file, which must name the same version.
set(BRIMVALE_PACKAGE_MAINTAINER "Brimvale developers <maintainers@brimvale.org>" CACHE STRING
    "Name and address in the package's Maintainer field and changelog")
file(READ ${PROJECT_SOURCE_DIR}/data/org.brimvale.Brimvale.metainfo.xml BV_METAINFO)
if(NOT BV_METAINFO MATCHES "<release version=\"([^\"]+)\" date=\"([0-9-]+)\"")
    message(FATAL_ERROR "data/org.brimvale.Brimvale.metainfo.xml names no release with a version and date")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "The newest release in data/org.brimvale.Brimvale.metainfo.xml is ${CMAKE_MATCH_1}, "
                        "but the project's version is ${PROJECT_VERSION}: add a <release> for ${PROJECT_VERSION}")
endif()
execute_process(COMMAND date -u -R -d "${CMAKE_MATCH_2} 12:00" OUTPUT_VARIABLE BV_RELEASE_DATE
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(BV_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/brimvale)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${CMAKE_BINARY_DIR}/package-doc/changelog @ONLY)
execute_process(COMMAND gzip -9nf ${CMAKE_BINARY_DIR}/package-doc/changelog COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/copyright ${CMAKE_BINARY_DIR}/package-doc/changelog.gz DESTINATION ${BV_DOC_DIR})
install(FILES ${CMAKE_CURRENT_LIST_DIR}/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        RENAME brimvale)

# The Debian package. Library dependencies come from dpkg-shlibdeps; the QML modules the screens
# import are loaded at run time, where it cannot see them, so they are listed here (the
# folder chooser falls back to a QML dialog that needs the folder list model).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME brimvale)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "The Brimvale developers")
set(CPACK_PACKAGE_CONTACT "${BRIMVALE_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find where disk space went and safely get it back")
set(CPACK_PACKAGE_DESCRIPTION
    "Brimvale measures the disk and its folders, finds what developer tools leave\n"
    "behind, data left by removed apps and identical files, and gives back what can\n"
    "safely go. Nothing moves until its preview has been seen and confirmed, and\n"
    "files go to the Trash unless deliberately chosen otherwise.\n"
    "\n"
    "Folder clean-up rules written in plain English, sorting of Downloads, build\n"
    "output of watched projects kept under a limit, and low-space warnings keep the\n"
    "disk tidy while it runs. Read-only terminal commands report the same findings,\n"
    "also as JSON.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml6-module-qtqml, qml6-module-qtqml-models, qml6-module-qtqml-workerscript, qml6-module-qtquick, "
    "qml6-module-qtquick-controls, qml6-module-qtquick-templates, qml6-module-qtquick-layouts, "
    "qml6-module-qtquick-dialogs, qml6-module-qt-labs-folderlistmodel")
string(REPLACE ";" "" CPACK_DEBIAN_PACKAGE_DEPENDS "${CPACK_DEBIAN_PACKAGE_DEPENDS}")
# Old-project and Build Watch checks ask git which folders a repository ignores.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "git")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_SOURCE_GENERATOR "")
include(CPack)
