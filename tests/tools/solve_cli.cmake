# The solve command from the outside: exit statuses 2 (command line), 1 (a
# log that cannot be read) and 0, the CSV on the standard output and the
# summary on the standard error, as the README's main command prints it.
# Run with -DZELNAV=<program> -DDATA=<data folder> -DOUT=<scratch folder>.
set(log ${DATA}/tlse-2024-001/tlse_1200_5min.zlog)
set(ref 4627852.3986,119640.3423,4372994.4588)

function(expect status)
  execute_process(COMMAND ${ZELNAV} solve ${ARGN}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL status)
    message(FATAL_ERROR "solve ${ARGN}: status ${rc}, expected ${status}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
  set(err "${err}" PARENT_SCOPE)
endfunction()

expect(2)
expect(2 ${log} ${log})
expect(2 ${log} --mode galileo)
expect(2 ${log} --ref 1,2)
expect(2 ${log} --frobnicate)
expect(2 ${log} --static --static-gain 0)
expect(1 ${OUT}/no_such_log.zlog)
if(NOT err MATCHES "no_such_log.zlog")
  message(FATAL_ERROR "a missing log should be named:\n${err}")
endif()

expect(0 ${log} --mode glo --ref ${ref})
string(REGEX MATCHALL "\n" lines "${out}")
list(LENGTH lines n)
if(NOT n EQUAL 301 OR NOT out MATCHES "^utc,fix,sys,x,y,z,lat,lon,h,dt,tau,nglo,ngps,dop,vx,vy,vz\n")
  message(FATAL_ERROR "expected a header and 300 epochs, got ${n} lines")
endif()
if(NOT err MATCHES "mode glo: 300 epochs, [0-9]+ fixes; skipped 0 messages"
   OR NOT err MATCHES "3D RMS [0-9.]+ m, 95% horizontal [0-9.]+ m, 95% vertical [0-9.]+ m")
  message(FATAL_ERROR "summary:\n${err}")
endif()
expect(0 ${log})
if(NOT err STREQUAL "")
  message(FATAL_ERROR "no summary without --ref:\n${err}")
endif()
