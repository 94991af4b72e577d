# Project warning set, applied per target so third-party code is not affected.
function(tq_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(TQ_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
