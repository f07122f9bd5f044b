# Makes the import library of a DLL's C functions and variables for Microsoft's linker:
#   cmake -DNM=... -DDLLTOOL=... -DDLL=NAME.dll -DIMPORTS=libNAME.dll.a -DLIBRARY=NAME.lib -P ...
# The names of C++ differ between the compilers and are left out. The list of names stays beside the
# library, as NAME.def.
execute_process(COMMAND ${NM} ${IMPORTS} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)

# Sets the named list to the first groups of all matches.
function(all_names list pattern)
  string(REGEX MATCHALL "${pattern}([A-Za-z][A-Za-z0-9_]*)" names "${symbols}")
  list(TRANSFORM names REPLACE "${pattern}" "")
  list(SORT names)
  set(${list} ${names} PARENT_SCOPE)
endfunction()

all_names(functions " T ")
all_names(variables " I __imp_")  # and functions: only variables have no code in the import library
list(REMOVE_ITEM variables ${functions})
list(TRANSFORM variables APPEND " DATA")
list(JOIN functions "\n  " functions)
list(JOIN variables "\n  " variables)
string(REGEX REPLACE "\\.lib$" ".def" definition ${LIBRARY})
file(WRITE ${definition} "LIBRARY ${DLL}\nEXPORTS\n  ${functions}\n  ${variables}\n")
execute_process(COMMAND ${DLLTOOL} -m i386:x86-64 -d ${definition} -l ${LIBRARY}
  COMMAND_ERROR_IS_FATAL ANY)
