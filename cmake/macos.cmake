# The libraries that Tollvane uses on macOS, and how its bundle is made. docs/macos.md explains it.

# The system's own ICU, of which it publishes a part of the C interface.
foreach(part uc i18n)
  add_library(ICU::${part} INTERFACE IMPORTED GLOBAL)
  target_link_libraries(ICU::${part} INTERFACE icucore)
endforeach()

find_package(nlohmann_json REQUIRED)  # only headers

# Installed libraries are for one architecture only, so this one is built for both.
include(FetchContent)
FetchContent_Declare(simdjson
  GIT_REPOSITORY https://github.com/simdjson/simdjson.git
  GIT_TAG 7382dc2be88e53fbc35cb50369b831855656f0fd) # v3.12.3
FetchContent_MakeAvailable(simdjson)

set(TOLLVANE_IDENTITY "-" CACHE STRING "Who signs the bundle, as codesign takes it; - makes an ad-hoc signature")
set(macos_packaging ${PROJECT_SOURCE_DIR}/packaging/macos)

# The application's icon, from the pictures of the extension.
function(tollvane_make_icon)
  set(pictures ${PROJECT_SOURCE_DIR}/extension/icons)
  set(set ${CMAKE_CURRENT_BINARY_DIR}/Tollvane.iconset)
  set(icon ${TOLLVANE_RESOURCES}/Tollvane.icns)
  add_custom_command(
    OUTPUT ${icon}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${set} ${TOLLVANE_RESOURCES}
    COMMAND ${CMAKE_COMMAND} -E copy ${pictures}/bell-16.png ${set}/icon_16x16.png
    COMMAND ${CMAKE_COMMAND} -E copy ${pictures}/bell-32.png ${set}/icon_16x16@2x.png
    COMMAND ${CMAKE_COMMAND} -E copy ${pictures}/bell-32.png ${set}/icon_32x32.png
    COMMAND ${CMAKE_COMMAND} -E copy ${pictures}/bell-128.png ${set}/icon_128x128.png
    COMMAND iconutil --convert icns --output ${icon} ${set}
    DEPENDS ${pictures}/bell-16.png ${pictures}/bell-32.png ${pictures}/bell-128.png
    VERBATIM)
  add_custom_target(tollvane_icon ALL DEPENDS ${icon})
endfunction()

# Signs what is in the bundle from the inside out, after all of it was made.
function(tollvane_sign_bundle)
  set(sign codesign --force --sign ${TOLLVANE_IDENTITY} --options runtime)
  if(NOT TOLLVANE_IDENTITY STREQUAL "-")
    list(APPEND sign --timestamp)
  endif()
  add_custom_target(tollvane_signed ALL
    COMMAND ${sign} --identifier com.quarnel.tollvane.bridge ${TOLLVANE_BUNDLE}/TollvaneBridge
    COMMAND ${sign} --entitlements ${macos_packaging}/Safari.entitlements
      ${TOLLVANE_APPLICATION}/Contents/PlugIns/TollvaneSafari.appex
    COMMAND ${sign} --entitlements ${macos_packaging}/Tollvane.entitlements ${TOLLVANE_APPLICATION}
    VERBATIM)
  add_dependencies(tollvane_signed tollvane tollvane_bridge_program tollvane_extension tollvane_icon tollvane_safari)
endfunction()
