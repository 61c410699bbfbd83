# Run by cpack on the tree that it is about to pack.

set(tree ${CPACK_TEMPORARY_INSTALL_DIRECTORY})

# What Debian keeps under other names.
if(CPACK_GENERATOR STREQUAL "DEB")
  set(share ${tree}/usr/share)
  set(doc ${share}/doc/${CPACK_PACKAGE_NAME})
  file(READ ${doc}/LICENSE license)
  file(REMOVE ${doc}/LICENSE)
  file(WRITE ${doc}/copyright
    "dorvek, statistics of peaks in pair distribution functions.\n\n${license}")
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${doc}/changelog
    "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium\n\n"
    "  * What is new for users stands in CHANGELOG.md.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
  if(NOT CPACK_DEBIAN_PACKAGE_SHLIBDEPS)
    file(WRITE ${share}/lintian/overrides/dorvek
      "# Linked statically on purpose: it starts faster, and runs on any Linux.\n"
      "dorvek: statically-linked-binary\n")
  endif()
  file(GLOB pages ${share}/man/man1/*.1)
  execute_process(COMMAND gzip -9n ${doc}/changelog ${pages}
    COMMAND_ERROR_IS_FATAL ANY)
endif()

# Open to all, whatever the umask of those who pack.
execute_process(COMMAND chmod -R u=rwX,go=rX ${tree} COMMAND_ERROR_IS_FATAL ANY)
