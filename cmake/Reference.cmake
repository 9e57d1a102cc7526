# The target "docs" makes the API reference of the installed headers: reference/html below the
# build folder. A comment that is missing or wrong is an error. It needs Doxygen and awk.
find_program(KECPP_DOXYGEN doxygen)
if(NOT KECPP_DOXYGEN)
  return()
endif()
set(KECPP_REFERENCE_INPUT docs/reference-start.md docs/watching.md docs/configuration.md docs/kept-behaviour.md
    docs/concurrency.md docs/failures.md docs/implementation.dox inventory/kecpp/inventory.h inventory/kecpp/fleet.h
    ${KECPP_PUBLIC_HEADERS})
list(TRANSFORM KECPP_REFERENCE_INPUT PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
set(reference_input ${KECPP_REFERENCE_INPUT})
list(JOIN KECPP_REFERENCE_INPUT " \\\n                         " KECPP_REFERENCE_INPUT)
configure_file(docs/Doxyfile.in ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile @ONLY)
# The stamp is there only after success; Doxygen's own files also after a warning.
add_custom_command(OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/reference/complete
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/scripts/make-reference ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
          ${CMAKE_CURRENT_SOURCE_DIR}
  COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_CURRENT_BINARY_DIR}/reference/complete
  DEPENDS ${reference_input} docs/comments.awk examples/agent.cpp
          ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
  COMMENT "API reference: ${CMAKE_CURRENT_BINARY_DIR}/reference/html/index.html" VERBATIM)
add_custom_target(docs DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/reference/complete)
