// PNG files through ImageIO.
#import <CoreGraphics/CoreGraphics.h>
#import <ImageIO/ImageIO.h>

#include <string>

#include "backends/macos/cf_owned.h"
#include "capture/png_encoder.h"

namespace brisko {
namespace {

using platform::macos::CFOwned;

// The captured bytes as an image: B, G, R, and a fourth byte the picture does not use. The
// capture asks the system for sRGB, so that is the colour space they are in.
CFOwned<CGImageRef> imageOf(const platform::BgraFrameView& picture) {
    const auto bytesPerRow = static_cast<std::size_t>(picture.bytesPerRow);
    const auto height = static_cast<std::size_t>(picture.height);
    const CFOwned<CGDataProviderRef> pixels(
        CGDataProviderCreateWithData(nullptr, picture.base, bytesPerRow * height, nullptr));
    const CFOwned<CGColorSpaceRef> sRGB(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
    if (!pixels || !sRGB) return nullptr;
    const CGBitmapInfo layout = static_cast<CGBitmapInfo>(kCGImageAlphaNoneSkipFirst) | kCGBitmapByteOrder32Little;
    return CFOwned<CGImageRef>(CGImageCreate(static_cast<std::size_t>(picture.width), height, 8, 32, bytesPerRow,
                                             sRGB.get(), layout, pixels.get(), nullptr, false,
                                             kCGRenderingIntentDefault));
}

}  // namespace

bool encodePngFile(const std::filesystem::path& path, const platform::BgraFrameView& picture) {
    const std::string& bytes = path.native();
    // Any bytes make a file URL; a relative path is taken from the current directory.
    const CFOwned<CFURLRef> url(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size()), false));
    const CFOwned<CGImageRef> image = imageOf(picture);
    if (!url || !image) return false;
    const CFOwned<CGImageDestinationRef> destination(
        CGImageDestinationCreateWithURL(url.get(), CFSTR("public.png"), 1, nullptr));
    if (!destination) return false;
    CGImageDestinationAddImage(destination.get(), image.get(), nullptr);
    return CGImageDestinationFinalize(destination.get());
}

}  // namespace brisko
