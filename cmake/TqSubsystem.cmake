# tq_add_subsystem(NAME <folder> [DEPENDS <folders below it>] SOURCES ...)
#
# Each subsystem folder of toolkit/ (or layer folder inside one, such as graphics/device) is
# an object library, tq_<folder> with '/' as '_'. It sees only its own headers and those of
# the folders it depends on: its include root is a generated folder holding links to exactly
# those folders, so an include that points the wrong way fails to build instead of slipping
# through.
function(tq_add_subsystem)
  cmake_parse_arguments(ARG "" "NAME" "DEPENDS;SOURCES;LIBRARIES" ${ARGN})
  string(REPLACE "/" "_" name ${ARG_NAME})
  set(target tq_${name})
  add_library(${target} OBJECT ${ARG_SOURCES})
  set(view ${CMAKE_BINARY_DIR}/include-views/${name})
  foreach(sub ${ARG_NAME} ${ARG_DEPENDS})
    if(NOT EXISTS ${view}/${sub})
      get_filename_component(parent ${view}/${sub} DIRECTORY)
      file(MAKE_DIRECTORY ${parent})
      file(CREATE_LINK ${TQ_TOOLKIT_DIR}/${sub} ${view}/${sub} SYMBOLIC)
    endif()
  endforeach()
  target_include_directories(${target} PRIVATE ${view} ${TQ_GENERATED_INCLUDE_DIR})
  target_compile_definitions(${target} PRIVATE tarqtool_EXPORTS)
  # Calls between the library's own exported functions need not allow for interposition:
  # they may be inlined and bound directly instead of going through the PLT.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
  tq_set_warnings(${target})
  set_property(GLOBAL APPEND PROPERTY TQ_SUBSYSTEM_TARGETS ${target})
endfunction()

# The subsystems in dependency order: each may depend only on those before it.
set(TQ_SUBSYSTEMS core hdl text ipc graphics wsi settings)

# Adds the subfolders of the current folder named after a subsystem (then any extra names),
# in dependency order, for those that exist. A subsystem's folders join the build by existing.
function(tq_add_subsystem_folders)
  foreach(folder ${TQ_SUBSYSTEMS} ${ARGN})
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
      add_subdirectory(${folder})
    endif()
  endforeach()
endfunction()
