# Checks the viewer's desktop integration as the desktop reads it: the MIME package compiles
# into a database that maps *.tqd to application/x-tqdiagram, and the menu entry opens that
# type with the viewer. Skipped (return code 77) without update-mime-database.
#   cmake -DSOURCE_DIR=... -DWORK_DIR=... -P RunDesktopFilesTest.cmake
find_program(UPDATE_MIME update-mime-database)
if(NOT UPDATE_MIME)
  message("update-mime-database is not installed: skipped")
  cmake_language(EXIT 77)
endif()
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/mime/packages)
file(COPY_FILE ${SOURCE_DIR}/app/desktop/tqdiagram-mime.xml ${WORK_DIR}/mime/packages/tqdiagram.xml)
execute_process(COMMAND ${UPDATE_MIME} ${WORK_DIR}/mime RESULT_VARIABLE status
                ERROR_VARIABLE errors)
if(NOT status EQUAL 0 OR errors MATCHES "[Ee]rror|[Ww]arning")
  message(FATAL_ERROR "update-mime-database failed: ${errors}")
endif()
file(READ ${WORK_DIR}/mime/globs2 globs)
if(NOT globs MATCHES "application/x-tqdiagram:\\*\\.tqd")
  message(FATAL_ERROR "*.tqd is not mapped to application/x-tqdiagram:\n${globs}")
endif()
file(READ ${SOURCE_DIR}/app/desktop/tqdiagram.desktop entry)
foreach(line "Exec=tqdiagram view %F" "MimeType=application/x-tqdiagram;" "Type=Application")
  string(FIND "${entry}" "${line}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "the desktop entry lacks '${line}'")
  endif()
endforeach()
