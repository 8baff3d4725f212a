# The macOS backend: Objective-C++ (with ARC, see the top CMakeLists) over the system frameworks.
# The codecs among its files belong to the core library, which the tests link without a backend.
file(GLOB BRISKO_MACOS_SOURCES CONFIGURE_DEPENDS src/backends/macos/*.mm)
list(REMOVE_ITEM BRISKO_MACOS_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/src/backends/macos/png_encoder_imageio.mm)
add_library(brisko_backend STATIC ${BRISKO_MACOS_SOURCES})
target_link_libraries(brisko_backend PUBLIC brisko_posix
  "-framework CoreGraphics" "-framework ScreenCaptureKit" "-framework CoreMedia" "-framework CoreVideo"
  "-framework AppKit" "-framework ApplicationServices" "-framework Foundation")
