# Builds brisko-mac-input from source on macOS, with its macOS backend over the system frameworks,
# and installs the program, capture-decode, the manual page and the protocol notes.
class BriskoMacInput < Formula
  desc "Lets an automated agent see and operate the desktop, guarding the host's own windows"
  # The source archive. The project publishes none yet, so install-from-checkout (beside this
  # file) writes the address and checksum of an archive of the checkout here before installing.
  url "file:///tmp/brisko-mac-input-0.1.0.tar.gz"
  sha256 "0000000000000000000000000000000000000000000000000000000000000000"

  depends_on "cmake" => :build
  depends_on "googletest" => :build
  depends_on "nlohmann-json" => :build
  depends_on "pkgconf" => :build
  depends_on "scdoc" => :build
  depends_on "libspng"
  depends_on macos: :sonoma
  depends_on "utf8proc"

  def install
    system "cmake", "-S", ".", "-B", "build", "-DBRISKO_BENCH=OFF", *std_cmake_args
    # Only what is installed; the tests are built and run by the project's own checks.
    system "cmake", "--build", "build", "--target", "brisko-mac-input", "capture-decode", "manpage"
    system "cmake", "--install", "build"
  end

  test do
    assert_match "usage: brisko-mac-input <check|", shell_output("#{bin}/brisko-mac-input 2>&1", 2)
    assert_equal "brisko=1\n",
                 pipe_output("#{bin}/brisko-mac-input own-ui-check", "{\"kind\":\"owner\",\"exec\":\"brisko-mac-menubar\"}\n")
    assert_match "the stream ends inside its 8-byte preamble",
                 pipe_output("#{bin}/capture-decode - #{testpath}/out.png 2>&1", "BCS2", 1)
    assert_predicate man1/"brisko-mac-input.1", :exist?
  end
end
