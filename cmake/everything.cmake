# What ./dev analyse compiles with: every warning of clang, except those that say nothing about this code. One reason for
# each.
set(everything -Weverything
  -Wno-unknown-warning-option  # of these, an older clang knows only some
  -Wno-c++98-compat -Wno-c++98-compat-pedantic -Wno-c++20-compat -Wno-pre-c++20-compat  # the code is C++20
  -Wno-padded  # where fields stand in memory makes no difference here
  -Wno-weak-vtables  # the roles are classes without code, so there is no file for their tables
  -Wno-exit-time-destructors -Wno-global-constructors  # of constants, which nothing uses at the end of a program
  -Wno-disabled-macro-expansion  # in macros of ICU and of the C library
  -Wno-gnu-statement-expression  # in macros of PipeWire
  -Wno-switch-enum -Wno-switch-default  # -Wswitch sees to it that each value or the rest is handled
  -Wno-covered-switch-default  # the other side of the same
  -Wno-float-equal  # stored numbers are 0 or 1 exactly, or they are something else
  -Wno-double-promotion  # a colour of Qt is a float, and nothing is lost when a double takes it
  -Wno-zero-as-null-pointer-constant  # clang 14 says so of each comparison that <=> makes
  -Wno-unsafe-buffer-usage -Wno-unsafe-buffer-usage-in-libc-call  # the interfaces of C take pointers
)
add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${everything}>")
