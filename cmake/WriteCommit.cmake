# Writes into FILE which commit of SOURCE is built, and touches the file only when that has changed.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --abbrev=10 --exclude=*
  OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
file(CONFIGURE OUTPUT ${FILE} CONTENT "#define TAVARO_COMMIT \"@commit@\"\n" @ONLY)
