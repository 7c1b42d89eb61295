# What every target of this project is compiled with: link tollvane_options privately.
add_library(tollvane_options INTERFACE)
# Files of src/ include each other from there ("platform/files.h"), all others from the root ("soundlog/lines.h").
target_include_directories(tollvane_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
# Qt's macros "emit" and "signals" would take ordinary words away from the core.
target_compile_definitions(tollvane_options INTERFACE QT_NO_KEYWORDS)
target_compile_options(tollvane_options INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>  # wrong about operator+
  $<$<BOOL:${TOLLVANE_WERROR}>:-Werror>
  # Likewise wrong, in one version or another, where everything is optimised together: worth a look, no reason to stop.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=array-bounds>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=stringop-overflow>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=maybe-uninitialized>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=free-nonheap-object>)

if(NOT APPLE)
  add_link_options(-Wl,--as-needed)  # a library that is linked and not called is not loaded
endif()

if(TOLLVANE_SANITIZE)
  add_compile_options(-fsanitize=${TOLLVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOLLVANE_SANITIZE})
  add_compile_definitions(TOLLVANE_SANITIZED)
endif()

# A program that belongs into the bundle.
function(tollvane_bundle_program target name)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY ${TOLLVANE_BUNDLE})
endfunction()

# tollvane_room(TARGET FOLDER SOURCE...): the sources of one folder. They are compiled together, as one unit, which
# takes a quarter of the time; their names, also those that no other file sees, differ.
function(tollvane_room target folder)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/)
  target_sources(${target} PRIVATE ${ARGN})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TOLLVANE_UNITY} UNITY_BUILD_MODE GROUP)
  string(MAKE_C_IDENTIFIER ${folder} group)
  set_source_files_properties(${ARGN} PROPERTIES UNITY_GROUP ${group})
endfunction()
