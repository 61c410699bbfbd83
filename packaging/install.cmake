# Installing, and packages that can be installed: cmake --build --preset release --target package

include(GNUInstallDirs)
install(TARGETS dorvek)
install(FILES doc/dorvek.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md CHANGELOG.md LICENSE CITATION.cff TYPE DOC)
install(FILES doc/si-o.svg doc/window.svg DESTINATION ${CMAKE_INSTALL_DOCDIR}/doc) # pictures in README.md
install(DIRECTORY examples TYPE DOC PATTERN dorvek.res EXCLUDE)

set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_VENDOR "the dorvek developers")
# Between the brackets Debian wants an address of mail; the project has none.
set(CPACK_PACKAGE_CONTACT "the dorvek developers <>")
set(CPACK_PACKAGE_DESCRIPTION
  "dorvek reads pair distribution functions of disordered materials and reports
the statistics of one peak without fitting a shape: coordination number, mean,
mode, variance and its two halves, skewness and kurtosis. It compares the peaks
of two samples, and gives means over independent simulations with their errors.")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
string(TOLOWER "dorvek-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}"
  CPACK_PACKAGE_FILE_NAME)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS gnuplot-nox)
if(NOT DORVEK_STATIC)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
# A build of the module without the programs packs the module alone.
if(DORVEK_PYTHON AND NOT DORVEK_TOOLS)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/python3-dorvek COMPONENT python)
  set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};dorvek;python;/")
  set(CPACK_PACKAGE_NAME python3-dorvek)
  string(REPLACE dorvek- python3-dorvek- CPACK_PACKAGE_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}")
  set(CPACK_DEBIAN_PACKAGE_SECTION python)
  math(EXPR next "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3-numpy, python3 (>= 3.${Python_VERSION_MINOR}), python3 (<< 3.${next})")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS python3-pandas)
endif()
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/staged.cmake)
include(CPack)
