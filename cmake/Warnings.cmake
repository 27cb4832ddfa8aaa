option(STPSNMP_WERROR "Warnings are errors" ON)

add_library(stp_warnings INTERFACE)
target_compile_options(stp_warnings INTERFACE
  $<$<BOOL:${STPSNMP_WERROR}>:-Werror> -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wcast-align
  -Wformat=2 -Wnull-dereference -Wundef -Wvla
  $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CXX_COMPILER_ID:GNU>>:-Wduplicated-cond -Wlogical-op>)

# GCC 12 sees overlapping copies inside std::string's own operator+ where there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(stp_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
