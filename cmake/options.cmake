# The options of every target of this project; each target links tollvane_options privately.
add_library(tollvane_options INTERFACE)
# Includes of files in src/ start there ("platform/files.h"), all other includes at the root ("soundlog/lines.h").
target_include_directories(tollvane_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
# Qt's macros "emit" and "signals" would make these ordinary words unusable in the core.
target_compile_definitions(tollvane_options INTERFACE QT_NO_KEYWORDS)
target_compile_options(tollvane_options INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>  # wrong about operator+
  $<$<BOOL:${TOLLVANE_WERROR}>:-Werror>
  # In some versions these warnings are wrong too if everything is optimised together, so they are not errors.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=array-bounds>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=stringop-overflow>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=maybe-uninitialized>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-error=free-nonheap-object>)

if(TOLLVANE_EVERYTHING)
  include(cmake/everything.cmake)
endif()

# For what draws, waits for files and speaks with other programs: it is no faster if it is optimised more, and takes
# longer to compile.
add_library(tollvane_waiting INTERFACE)
target_compile_options(tollvane_waiting INTERFACE $<$<CONFIG:Release>:-O1>)

# The same sources give the same programs, in any folder.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)

if(NOT APPLE)
  add_link_options(-Wl,--as-needed)  # a library that is linked but not used is not loaded
endif()

# What people run checks itself for overrun buffers and stacks, and cannot be redirected by overwritten addresses. The
# sanitizers have checks of their own.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT APPLE AND NOT TOLLVANE_SANITIZE)
  add_compile_options(-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3
    -D_GLIBCXX_ASSERTIONS)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    add_compile_options(-fcf-protection)
  endif()
  add_link_options(-pie -Wl,-z,relro,-z,now)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()

if(TOLLVANE_SANITIZE)
  add_compile_options(-fsanitize=${TOLLVANE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TOLLVANE_SANITIZE})
  add_compile_definitions(TOLLVANE_SANITIZED)
endif()

# Puts a program into the bundle.
function(tollvane_bundle_program target name)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY ${TOLLVANE_BUNDLE})
endfunction()

# tollvane_room(TARGET FOLDER [UNIT NAME] SOURCE...): adds the sources of one folder. All sources of one unit are
# compiled together, which takes a quarter of the time; without UNIT, a folder is a unit of its own. So all names in a
# unit must differ, even those in anonymous namespaces.
function(tollvane_room target folder)
  cmake_parse_arguments(PARSE_ARGV 2 room "" "UNIT" "")
  if(NOT room_UNIT)
    string(MAKE_C_IDENTIFIER ${folder} room_UNIT)
  endif()
  list(TRANSFORM room_UNPARSED_ARGUMENTS PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/)
  target_sources(${target} PRIVATE ${room_UNPARSED_ARGUMENTS})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${TOLLVANE_UNITY} UNITY_BUILD_MODE GROUP)
  set_source_files_properties(${room_UNPARSED_ARGUMENTS} PROPERTIES UNITY_GROUP ${room_UNIT})
endfunction()

# tollvane_module(TARGET LIBRARY NAME): the static library as a module in the bundle, NAME.so, which a program loads
# when it first needs it.
function(tollvane_module target library name)
  set_target_properties(${library} PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  add_library(${target} MODULE)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${library}>)
  target_link_libraries(${target} PRIVATE tollvane_options ${library})
  set_target_properties(${target} PROPERTIES
    LINKER_LANGUAGE CXX PREFIX "" OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${TOLLVANE_BUNDLE})
endfunction()
