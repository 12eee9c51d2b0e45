# Debian packages, one for each component that is installed. cpack makes them, and
# scripts/packages tries them.
get_target_property(soversion oc_pan_cal_shared SOVERSION)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME oc-pan)
set(CPACK_PACKAGE_VENDOR "oc_pan developers")
set(CPACK_PACKAGE_CONTACT "oc_pan developers <oc-pan@example.invalid>")
set(CPACK_COMPONENTS_ALL library development tool)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# What a program was linked with is looked up for the packages of others; our own depend on one
# another in equal version.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME liboc-pan-cal${soversion})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"From chessboard pictures to the tables of a stitching device: the library,
for programs that were built with it.")
# The loader's list of libraries is renewed.
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liboc-pan-cal-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS libc6-dev)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"To build programs with the library: its header, and what CMake and pkg-config
find it by.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME oc-pan)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOL_DEPENDS library)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
"The tool oc_pan: it calibrates a rig from chessboard pictures, tells how good
the result is, and makes the tables of the stitching device. With manual pages
and completion for bash.")
include(CPack)
