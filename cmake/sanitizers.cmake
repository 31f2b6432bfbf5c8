# QZBIFUN_SANITIZE=address,undefined or thread instruments everything that the project builds.
set(QZBIFUN_SANITIZE "" CACHE STRING "Sanitizers, separated by commas")
if(QZBIFUN_SANITIZE)
  add_compile_options(-fsanitize=${QZBIFUN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QZBIFUN_SANITIZE})
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

# Shared libraries name all that they need. clang leaves the sanitizers' own symbols to the program, so not there.
set(QZBIFUN_NO_UNDEFINED -Wl,-z,defs)
if(QZBIFUN_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(QZBIFUN_NO_UNDEFINED "")
endif()
