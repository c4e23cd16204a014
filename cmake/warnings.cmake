# qv_warnings: the warnings that every target of ours is compiled with; each one is an error.
add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-sign-conversion -Wno-implicit-int-float-conversion>
  # In optimised builds g++ 12 wrongly reports an insertion into a std::string as a copy onto itself.
  $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<CONFIG:RelWithDebInfo>>:-Wno-restrict>
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)
