# What a release is hardened with. Binding at load is not asked for: hosts supply the symbols that
# they have when they are first called.
add_compile_options(
  "$<$<CONFIG:Release>:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
add_link_options("$<$<CONFIG:Release>:LINKER:-z,relro>")
