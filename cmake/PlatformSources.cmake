# Platform files are chosen by their suffix, in every target: `_win.cpp` on
# Windows; `_posix.cpp` (any POSIX system) and `_linux.cpp` elsewhere. A file
# without such a suffix is built everywhere.
function(cadrelle_platform_sources var)
  if(WIN32)
    list(FILTER ${var} EXCLUDE REGEX "_(posix|linux)\\.cpp$")
  else()
    list(FILTER ${var} EXCLUDE REGEX "_win\\.cpp$")
  endif()
  set(${var} ${${var}} PARENT_SCOPE)
endfunction()
