# Script mode: stage an install, configure and build the client against it, run the client.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${output}")
  endif()
  set(last_output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${STAGE_DIR} ${CLIENT_BUILD})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${STAGE_DIR})
run(${CMAKE_COMMAND} -S ${CLIENT_SOURCE} -B ${CLIENT_BUILD} -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${STAGE_DIR} -DCMAKE_BUILD_TYPE=Release
    "-DCMAKE_CXX_FLAGS=${CLIENT_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${CLIENT_FLAGS}")
run(${CMAKE_COMMAND} --build ${CLIENT_BUILD})
run(${CLIENT_BUILD}/installed_client)
if(NOT last_output MATCHES "Cannot open file 'x'")
  message(FATAL_ERROR "unexpected client output:\n${last_output}")
endif()
message(STATUS "${last_output}")
