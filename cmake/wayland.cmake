# wayland_protocol(TARGET XML): gives a target the client side of a protocol, as NAME-client-protocol.h and its code.
enable_language(C)  # the generated code is C
pkg_check_modules(wayland_client REQUIRED IMPORTED_TARGET wayland-client)
pkg_get_variable(wayland_scanner wayland-scanner wayland_scanner)
pkg_get_variable(wayland_protocols wayland-protocols pkgdatadir)

function(wayland_protocol target xml)
  get_filename_component(name ${xml} NAME_WE)
  set(header ${CMAKE_CURRENT_BINARY_DIR}/${name}-client-protocol.h)
  set(code ${CMAKE_CURRENT_BINARY_DIR}/${name}-protocol.c)
  add_custom_command(OUTPUT ${header} COMMAND ${wayland_scanner} client-header ${xml} ${header} DEPENDS ${xml} VERBATIM)
  add_custom_command(OUTPUT ${code} COMMAND ${wayland_scanner} private-code ${xml} ${code} DEPENDS ${xml} VERBATIM)
  # A library of its own, because generated code is compiled without our warnings.
  add_library(${name} STATIC ${header} ${code})
  target_include_directories(${name} SYSTEM PUBLIC ${CMAKE_CURRENT_BINARY_DIR})
  target_link_libraries(${name} PUBLIC PkgConfig::wayland_client)
  target_link_libraries(${target} PRIVATE ${name})
  add_dependencies(generated ${name})
endfunction()
