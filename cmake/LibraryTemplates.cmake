# mostly_library_templates(<source>...)
#
# Files that consist mostly of a library's templates, as those do that read JSON, TOML or command lines. With the
# sanitizers, they go without the checks on every access to an object, which take a third of their compile time: a null
# pointer is seen by AddressSanitizer as well. Without them, they go without the compiler's warning of null pointers: at
# some levels of optimisation it sees one in what CLI11 does with lists of texts.
function(mostly_library_templates)
  if(STPSNMP_SANITIZE)
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -fno-sanitize=alignment,null,object-size,vptr)
  else()
    set_source_files_properties(${ARGN} PROPERTIES COMPILE_OPTIONS -Wno-null-dereference)
  endif()
endfunction()
