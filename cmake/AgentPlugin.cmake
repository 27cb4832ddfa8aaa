# A shared library that a C agent without a C++ runtime loads and unloads: C++ sources, linked as C.

# Compile options of such a library: nothing that needs the C++ runtime.
add_library(agent_plugin_options INTERFACE)
target_compile_options(agent_plugin_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)

# add_agent_plugin(<target> OBJECTS <object library>... EXPORTS <version script>)
function(add_agent_plugin target)
  cmake_parse_arguments(PARSE_ARGV 1 plugin "" "EXPORTS" "OBJECTS")
  list(TRANSFORM plugin_OBJECTS REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>")
  add_library(${target} SHARED ${plugin_OBJECTS})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C LINK_DEPENDS ${plugin_EXPORTS})
  target_link_options(${target} PRIVATE
    LINKER:--version-script=${plugin_EXPORTS} LINKER:-z,defs LINKER:-z,relro LINKER:-z,now LINKER:--as-needed)
endfunction()
