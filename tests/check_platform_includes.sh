#!/usr/bin/env bash
# Fails when a file includes a system header outside the backend that may: operating-system
# headers belong to the backends (src/backends/x11, macos, posix), Apple's frameworks and
# libraries to src/backends/macos only, X headers to src/backends/x11 only.
set -eu
src=${1:?usage: check_platform_includes.sh SRC_DIR}
include='#[[:space:]]*(include|import)[[:space:]]*<'
os="$include"'((unistd|fcntl|poll|signal|pthread|spawn|dlfcn|termios)\.h>|(sys|linux)/)'
apple="$include"'((libproc|compression|Block)\.h>|(CoreGraphics|CoreFoundation|CoreMedia|CoreVideo|ApplicationServices|AppKit|Cocoa|Foundation|ScreenCaptureKit|ImageIO|Accelerate|CoreServices|UniformTypeIdentifiers|IOKit|objc|dispatch|mach)/)'
x11="$include"'(xcb|X11)/'

# hits PATTERN ALLOWED_DIRS_REGEX: the including lines outside the allowed folders
hits() {
  grep -rnE "$1" "$src" --include='*.h' --include='*.cpp' --include='*.mm' | grep -vE "^$src/backends/($2)/" || true
}
found=$(hits "$os" 'x11|macos|posix'; hits "$apple" macos; hits "$x11" x11)
if [ -n "$found" ]; then
  echo "system headers outside the backend that may include them:"
  echo "$found"
  exit 1
fi
echo "1 passed, 0 failed"
