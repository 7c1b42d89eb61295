#!/usr/bin/env bash
# check.sh: compiles the code for macOS without a Mac, with clang and the declarations in this folder: Objective-C++ for
# both architectures, C++ for one. Nothing is linked or run. Every warning is an error: a selector that nobody declares,
# a call that the oldest supported system does not have and that is not guarded, a deprecated one. Prints what is wrong
# and ends with 1.
#
# C++'s headers are those of this Linux, made to fit: they ask for the computer that they were installed for, "__nonnull"
# is a keyword of clang for macOS, and there is no __float128, of which the headers know for another compiler only.
set -euo pipefail
cd "$(dirname "$0")/../.."

# How many processes compile at the same time.
jobs=$(nproc)

flags=(-std=c++20 -fobjc-arc -fblocks -fsyntax-only -nostdinc++ -nostdlibinc
  -U__nonnull -D__INTEL_LLVM_COMPILER=1 -DSYCL_LANGUAGE_VERSION=1 -D_GNU_SOURCE "-D__$(uname -m)__=1" "-D__builtin_ia32_pause()=((void)0)"
  -Itests/macos/declarations -Isrc -I.
  -Wall -Wextra -Wshadow -Wno-unused-parameter
  -Wunguarded-availability -Wdeprecated-declarations -Wundeclared-selector -Wstrict-selector-match
  -Wobjc-messaging-id -Warc-repeated-use-of-weak -Werror)
while read -r folder; do
  [[ $folder == */lib/clang/* ]] || flags+=(-isystem "$folder") # clang finds its own for each computer
done < <(clang++ -E -x c++ -v /dev/null 2>&1 | sed -n '/^#include <...>/,/^End/s/^ //p')

mapfile -t files < <(find src/main src/platform/macos src/platform/posix bridge extension/safari tests/contract \
  -name '*.mm' -o -path '*/macos/*.cpp' -o -path '*/posix/*.cpp' \
  -o -path 'bridge/*.cpp' ! -path 'bridge/linux_*' ! -path bridge/parent_browser.cpp | sort)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# What nearly every file includes is read only once for each architecture.
printf '#import <Foundation/Foundation.h>\n#include "platform/platform.h"\n' >"$work/common.h"

# compile TARGET
compile() {
  local target=$1
  clang++ -target "$target" "${flags[@]/-fsyntax-only/-Wno-pragma-once-outside-header}" \
    -x objective-c++-header "$work/common.h" -o "$work/$target.pch"
  printf '%s\0' "${files[@]}" | grep -z '\.mm$' |
    xargs -0 -P "$jobs" -n 1 clang++ -target "$target" "${flags[@]}" -include-pch "$work/$target.pch" || failed=1
}

compile arm64-apple-macos13
compile x86_64-apple-macos13 # which has another BOOL
printf '%s\0' "${files[@]}" | grep -zv '\.mm$' |
  xargs -0 -P "$jobs" -n 1 clang++ -target arm64-apple-macos13 "${flags[@]}" || failed=1
lint/declarations.py || failed=1
[ $failed = 0 ] || { echo "macos-check: the code for macOS has the errors above." >&2; exit 1; }
echo "macos-check: ${#files[@]} files compile, and every declaration is used."
