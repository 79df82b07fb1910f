# Makes ${OUTPUT}, which loads ${NAME}.dll at the first call, out of the compiler's own import library ${NAME}:
#   cmake -DNAME=... -DOUTPUT=... -DCOMPILER=... -DNM=... -DDLLTOOL=... -P delayed_library.cmake
execute_process(COMMAND ${COMPILER} -print-file-name=lib${NAME}.a
    OUTPUT_VARIABLE library OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${NM} ${library} OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL " I __imp_[^\n]+" functions "${symbols}")
list(TRANSFORM functions REPLACE "^ I __imp_" "")
list(SORT functions)
list(JOIN functions "\n" functions)
file(WRITE ${NAME}.def "LIBRARY ${NAME}.dll\nEXPORTS\n${functions}\n")
execute_process(COMMAND ${DLLTOOL} -d ${NAME}.def -y ${OUTPUT} COMMAND_ERROR_IS_FATAL ANY)
