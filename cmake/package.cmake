# The Debian package, made by `cpack -G DEB` in a build folder (scripts/package does it). It holds
# what `cmake --install` installs; the libraries it needs are read from the binaries by
# dpkg-shlibdeps. The program starts no other program, so it depends on nothing else.
set(CPACK_PACKAGE_NAME brisko-mac-input)
set(CPACK_PACKAGE_CONTACT "brisko dev <dev@brisko.local>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "lets an automated agent see and operate an X desktop")
set(CPACK_PACKAGE_DESCRIPTION
    "A command-line program that a desktop assistant starts as a child process so that an
automated agent can see and operate the screen: it synthesises pointer and keyboard input
(XTEST), takes screenshots, streams changed screen tiles, reads and writes the clipboard and
reports permissions, held modifiers, display geometry and the session. It refuses presses that
would land on the assistant's own windows and leaves those windows out of every capture.

Also holds capture-decode, the reference reader of the capture stream.")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
