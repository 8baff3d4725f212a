# The macOS backend: Objective-C++ over the system frameworks.
enable_language(OBJCXX)
file(GLOB_RECURSE BRISKO_MACOS_SOURCES CONFIGURE_DEPENDS src/backends/macos/*.mm)
add_library(brisko_backend STATIC ${BRISKO_MACOS_SOURCES})
target_compile_options(brisko_backend PRIVATE -fobjc-arc)
target_link_libraries(brisko_backend PUBLIC brisko_posix
  "-framework CoreGraphics" "-framework ScreenCaptureKit" "-framework CoreMedia"
  "-framework CoreVideo" "-framework Accelerate" "-framework ImageIO" "-framework AppKit"
  "-framework ApplicationServices" "-framework Foundation" compression)
