# QZBIFUN_COVERAGE counts executed lines and branches for gcovr. Threads share the counters, hence the atomic updates.
if(QZBIFUN_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
