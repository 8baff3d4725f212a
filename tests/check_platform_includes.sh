#!/usr/bin/env bash
# Fails when a file of the logic includes an operating-system or window-system header: only the
# backends (src/backends/x11, src/backends/macos, src/backends/posix) may.
set -eu
src=${1:?usage: check_platform_includes.sh SRC_DIR}
pattern='#\s*(include|import)\s*<(unistd|fcntl|poll|signal|pthread|spawn|dlfcn|libproc|termios)\.h>|#\s*(include|import)\s*<(sys|xcb|X11|CoreGraphics|CoreFoundation|CoreMedia|CoreVideo|ApplicationServices|AppKit|Cocoa|Foundation|ScreenCaptureKit|ImageIO|Accelerate|dispatch|compression|mach|linux)/'
hits=$(grep -rnE "$pattern" "$src" --include='*.h' --include='*.cpp' --include='*.mm' \
  | grep -vE "^$src/backends/(x11|macos|posix)/" || true)
if [ -n "$hits" ]; then
  echo "system headers outside the backends:"
  echo "$hits"
  exit 1
fi
echo "1 passed, 0 failed"
