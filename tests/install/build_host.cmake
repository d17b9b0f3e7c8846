# Builds a C program against the installed package, the way a user's
# project would, and runs it.
#
# MODE=cmake      configures SOURCE as a CMake project with the prefix on
#                 CMAKE_PREFIX_PATH (find_package(zelnav)) and builds it;
# MODE=pkgconfig  compiles SOURCES with the flags `pkg-config` gives for
#                 zelnav, searching the prefix's pkgconfig folder only.
# Then runs WORK/PROGRAM with ARGS; its exit code is the test's.
#
# -D MODE PREFIX LIBDIR SOURCE WORK PROGRAM [SOURCES] [ARGS] CC [CFLAGS]
#    GENERATOR [PKG_CONFIG]
# CFLAGS are extra compiler and linker flags (the sanitizers, when the
# library was built with them: its runtime must come first).
separate_arguments(cflags UNIX_COMMAND "${CFLAGS}")
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${what} failed (${rc}):\n${ARGN}\n${out}\n${err}")
  endif()
  set(run_out "${out}" PARENT_SCOPE)
endfunction()

if(MODE STREQUAL "cmake")
  run("configure" ${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK} -G ${GENERATOR}
      -DCMAKE_BUILD_TYPE=Release
      -DCMAKE_C_COMPILER=${CC}
      "-DCMAKE_C_FLAGS=${CFLAGS} -Wall -Wextra -Werror"
      "-DCMAKE_EXE_LINKER_FLAGS=${CFLAGS}"
      -DCMAKE_PREFIX_PATH=${PREFIX}
      -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
      -DCMAKE_FIND_USE_SYSTEM_PACKAGE_REGISTRY=OFF)
  # The package must come from the fresh prefix, not from elsewhere.
  file(STRINGS ${WORK}/CMakeCache.txt dir REGEX "^zelnav_DIR:")
  if(NOT dir STREQUAL "zelnav_DIR:PATH=${PREFIX}/${LIBDIR}/cmake/zelnav")
    message(FATAL_ERROR "zelnav found elsewhere: ${dir}")
  endif()
  run("build" ${CMAKE_COMMAND} --build ${WORK})
elseif(MODE STREQUAL "pkgconfig")
  set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
  set(ENV{PKG_CONFIG_LIBDIR} ${PREFIX}/${LIBDIR}/pkgconfig)
  run("pkg-config" ${PKG_CONFIG} --modversion zelnav)
  string(STRIP "${run_out}" version)
  if(NOT version STREQUAL VERSION)
    message(FATAL_ERROR "pkg-config says version ${version}, the build is ${VERSION}")
  endif()
  run("pkg-config" ${PKG_CONFIG} --cflags --libs zelnav)
  separate_arguments(pcflags UNIX_COMMAND "${run_out}")
  set(srcs "")
  foreach(s IN LISTS SOURCES)
    list(APPEND srcs ${SOURCE}/${s})
  endforeach()
  run("compile" ${CC} -std=c11 -Wall -Wextra -Werror ${cflags} ${srcs} ${pcflags}
      -o ${WORK}/${PROGRAM})
  # pkg-config gives no run path: the loader is told where the library is.
  set(ENV{LD_LIBRARY_PATH} ${PREFIX}/${LIBDIR})
else()
  message(FATAL_ERROR "unknown MODE '${MODE}'")
endif()

execute_process(COMMAND ${WORK}/${PROGRAM} ${ARGS} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} failed (${rc})")
endif()
