// capture-decode: reads a capture stream, checks it against the format, and writes the picture
// it ends with (and, on request, the picture after every record) as PNG files.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "capture_stream_decoder.h"
#include "png_file.h"

namespace {

constexpr const char* usage =
    "usage: capture-decode [--list] [--frames DIR] INPUT OUTPUT.png\n"
    "  INPUT      a capture stream, or - for standard input\n"
    "  OUTPUT.png the picture after the last record\n"
    "  --list     print one line per record\n"
    "  --frames   also write DIR/frame-000001.png ... after each record\n";

struct Options {
    bool list = false;
    std::string framesDir;
    std::string input;
    std::string output;
};

bool parse(const std::vector<std::string>& args, Options& options) {
    std::vector<std::string> positional;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--list") {
            options.list = true;
        } else if (args[i] == "--frames" && i + 1 < args.size()) {
            options.framesDir = args[++i];
        } else if (args[i].size() > 1 && args[i][0] == '-') {
            return false;
        } else {
            positional.push_back(args[i]);
        }
    }
    if (positional.size() != 2) return false;
    options.input = positional[0];
    options.output = positional[1];
    return true;
}

int fail(const std::string& message) {
    std::cerr << "capture-decode: " << message << '\n';
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace brisko::decode;
    Options options;
    if (!parse({argv + 1, argv + argc}, options)) {
        std::cerr << usage;
        return 2;
    }
    std::ifstream file;
    if (options.input != "-") {
        file.open(options.input, std::ios::binary);
        if (!file) return fail("cannot open " + options.input);
    }
    std::istream& in = options.input == "-" ? std::cin : file;

    CaptureStreamDecoder decoder;
    std::uint64_t records = 0;
    try {
        decodeCaptureStream(in, decoder, [&](const FrameRecord& record) {
            records = record.index;
            if (options.list) {
                std::cout << "record " << record.index << " at byte " << record.offset << ": " << record.width << " x "
                          << record.height << ", " << record.tiles.size() << (record.tiles.size() == 1 ? " tile, " : " tiles, ")
                          << record.length << " bytes\n";
            }
            if (options.framesDir.empty()) return;
            char name[32];
            std::snprintf(name, sizeof name, "/frame-%06llu.png", static_cast<unsigned long long>(record.index));
            if (const auto error = writePng(options.framesDir + name, decoder.width(), decoder.height(), decoder.picture())) {
                throw std::runtime_error(*error);
            }
        });
    } catch (const std::exception& e) {
        return fail(e.what());
    }
    if (records == 0) return fail("the stream holds no frame records");
    if (const auto error = writePng(options.output, decoder.width(), decoder.height(), decoder.picture())) {
        return fail(*error);
    }
    std::cout << "decoded " << records << (records == 1 ? " record" : " records") << "; final frame " << decoder.width()
              << " x " << decoder.height() << '\n';
    return 0;
}
