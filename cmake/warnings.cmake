# Warnings of every target of the project, and none for what it includes from elsewhere. clang's -Wconversion has
# -Wsign-conversion in it; g++ is told, so that both say the same.
add_library(qzbifun_warnings INTERFACE)
target_compile_options(
  qzbifun_warnings
  INTERFACE -Wall
            -Wextra
            -Wconversion
            -Wsign-conversion
            -Wshadow
            -Wmissing-declarations
            -Werror
            # g++ 12 sees overlapping copies in std::string's operator+ that are none (its bug 105651).
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            # It also notes that wide arguments are passed in another way than before 4.6; no such argument crosses a boundary.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-psabi>
)
