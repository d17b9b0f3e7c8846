# Installs the build into a fresh prefix and checks what arrived: the
# shared library with its SONAME and links, every public header under
# include/zelnav, the CMake package, the pkg-config file and the Python
# module beside the library, and nothing
# else of the library (no static archive, no tool library). Programs under
# bin/ are allowed: commands for users are not internal.
#
# -D BUILD=<build dir> PREFIX=<prefix> SOURCE=<source dir> LIBDIR=<libdir>
#    VERSION=<x.y.z> SOVERSION=<n> OBJDUMP=<objdump or empty>
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "cmake --install failed (${rc}):\n${out}\n${err}")
endif()

file(GLOB_RECURSE found LIST_DIRECTORIES false RELATIVE ${PREFIX} ${PREFIX}/*)
list(FILTER found EXCLUDE REGEX "^bin/")

set(want
  ${LIBDIR}/libzelnav.so
  ${LIBDIR}/libzelnav.so.${SOVERSION}
  ${LIBDIR}/libzelnav.so.${VERSION}
  ${LIBDIR}/cmake/zelnav/zelnavConfig.cmake
  ${LIBDIR}/cmake/zelnav/zelnavConfigVersion.cmake
  ${LIBDIR}/cmake/zelnav/zelnavTargets.cmake
  ${LIBDIR}/pkgconfig/zelnav.pc)
file(GLOB headers RELATIVE ${SOURCE}/include ${SOURCE}/include/*.h)
foreach(h IN LISTS headers)
  list(APPEND want include/zelnav/${h})
endforeach()
file(GLOB python RELATIVE ${SOURCE}/python ${SOURCE}/python/zelnav/*.py)
foreach(py IN LISTS python)
  list(APPEND want ${LIBDIR}/python3/dist-packages/${py})
endforeach()
# The per-configuration part of the exported targets (its name follows
# the build type).
file(GLOB per_config RELATIVE ${PREFIX} ${PREFIX}/${LIBDIR}/cmake/zelnav/zelnavTargets-*.cmake)
list(LENGTH per_config n)
if(NOT n EQUAL 1)
  message(FATAL_ERROR "expected one zelnavTargets-<config>.cmake, found: ${per_config}")
endif()
list(APPEND want ${per_config})

list(SORT found)
list(SORT want)
if(NOT found STREQUAL want)
  set(extra ${found})
  list(REMOVE_ITEM extra ${want})
  set(missing ${want})
  list(REMOVE_ITEM missing ${found})
  message(FATAL_ERROR "installed files differ\n  not expected: ${extra}\n  missing: ${missing}")
endif()

# The host links libzelnav.so, a link to the versioned file whose SONAME
# the loader looks for.
foreach(name libzelnav.so libzelnav.so.${SOVERSION})
  if(NOT IS_SYMLINK ${PREFIX}/${LIBDIR}/${name})
    message(FATAL_ERROR "${LIBDIR}/${name} is not a symbolic link")
  endif()
endforeach()
if(OBJDUMP)
  execute_process(COMMAND ${OBJDUMP} -p ${PREFIX}/${LIBDIR}/libzelnav.so.${VERSION}
    OUTPUT_VARIABLE dyn RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0 OR NOT dyn MATCHES "SONAME +libzelnav\\.so\\.${SOVERSION}\n")
    message(FATAL_ERROR "libzelnav.so.${VERSION} lacks the SONAME libzelnav.so.${SOVERSION}")
  endif()
else()
  message(STATUS "no objdump: SONAME not checked")
endif()
list(LENGTH found n)
message(STATUS "installed ${n} files into ${PREFIX}")
