# Installing: cmake --install build/companions --prefix ~/.local. Packages are made by tarball.sh and
# debian.sh, which install by the same rules.

include(GNUInstallDirs)
install(TARGETS dorvek)
install(FILES doc/dorvek.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md CHANGELOG.md LICENSE CITATION.cff TYPE DOC)
install(FILES doc/si-o.svg doc/window.svg DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc) # pictures in README.md
install(DIRECTORY examples TYPE DOC PATTERN dorvek.res EXCLUDE)

string(TOLOWER "dorvek-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}" name)
set(DORVEK_TARBALL ${name} CACHE INTERNAL "What tarball.sh makes of this build")
