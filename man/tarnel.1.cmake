# Writes PAGE from tarnel.1.in and what TOOL tells of its verbs.
execute_process(COMMAND ${TOOL} manual OUTPUT_VARIABLE VERBS COMMAND_ERROR_IS_FATAL ANY)
configure_file(${CMAKE_CURRENT_LIST_DIR}/tarnel.1.in ${PAGE} @ONLY)
