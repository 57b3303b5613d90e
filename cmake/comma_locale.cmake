# A locale with a decimal comma for the tests, compiled into the build tree where its sources are
# installed (Debian's package locales).
function(kesncd_add_comma_locale directory)
  find_program(KESNCD_LOCALEDEF localedef)
  if(KESNCD_LOCALEDEF AND NOT EXISTS ${directory}/de_DE.UTF-8)
    file(MAKE_DIRECTORY ${directory})
    execute_process(
      COMMAND ${KESNCD_LOCALEDEF} -i de_DE -f UTF-8 ${directory}/de_DE.UTF-8
      OUTPUT_QUIET ERROR_QUIET)
  endif()
endfunction()
