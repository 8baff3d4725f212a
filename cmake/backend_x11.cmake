# The X server backend: XCB and its extensions. Only files under src/backends/x11 see X headers.
pkg_check_modules(XCB REQUIRED IMPORTED_TARGET xcb xcb-res xcb-shape xcb-randr xcb-shm xcb-composite xcb-damage xcb-xfixes)
file(GLOB_RECURSE BRISKO_X11_SOURCES CONFIGURE_DEPENDS src/backends/x11/*.cpp)
add_library(brisko_backend STATIC ${BRISKO_X11_SOURCES})
target_link_libraries(brisko_backend PUBLIC brisko_posix PkgConfig::XCB)
# Input and the probes: XTEST, keysym lookup, the screen saver and display power state.
pkg_check_modules(XCB_INPUT REQUIRED IMPORTED_TARGET xcb-xtest xcb-keysyms xcb-screensaver xcb-dpms)
target_link_libraries(brisko_backend PUBLIC PkgConfig::XCB_INPUT)
