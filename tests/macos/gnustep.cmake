# With -DTOLLVANE_COCOA=gnustep: the contract tests of the roles for macOS that a GNUstep on this computer can carry. It
# needs clang, the runtime with ARC, and GNUstep's base library with libdispatch; gnustep-config must be in the path.
# docs/macos.md says what such a run shows.
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
find_package(GTest REQUIRED)
find_package(ICU REQUIRED COMPONENTS i18n uc)
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${GNUSTEP_CONFIG} --base-libs OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE)
separate_arguments(flags)
separate_arguments(libraries)
list(REMOVE_ITEM flags -MMD -MP -Wall -DGSWARN)

set(src ${PROJECT_SOURCE_DIR}/src)
add_executable(gnustep_test
  ${PROJECT_SOURCE_DIR}/tests/macos/gnustep.mm
  ${PROJECT_SOURCE_DIR}/tests/contract/macos_systems.mm
  ${src}/platform/macos/bundle.mm
  ${src}/platform/macos/child_processes.mm
  ${src}/platform/macos/clock_and_dates.mm
  ${src}/platform/macos/defaults.mm
  ${src}/platform/macos/http.mm
  ${src}/platform/macos/main_queue.mm
  ${src}/platform/posix/posix_files.cpp
  ${src}/support/ascii.cpp
  ${src}/support/text.cpp)
target_include_directories(gnustep_test PRIVATE ${src} ${PROJECT_SOURCE_DIR})
target_compile_options(gnustep_test PRIVATE $<$<COMPILE_LANGUAGE:OBJCXX>:${flags};-fobjc-arc;-include;${PROJECT_SOURCE_DIR}/tests/macos/gnustep.h>)
target_link_libraries(gnustep_test PRIVATE ${libraries} -ldispatch ICU::i18n ICU::uc GTest::gmock GTest::gtest_main)
