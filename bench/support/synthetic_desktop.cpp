#include "support/synthetic_desktop.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace brisko::testing {
namespace {

// splitmix64: small, fast and the same everywhere, unlike the standard distributions.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    // Uniform in [lo, hi].
    std::int64_t between(std::int64_t lo, std::int64_t hi) {
        return lo + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(hi - lo + 1));
    }
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

private:
    std::uint64_t state_;
};

std::uint32_t hash3(std::int64_t x, std::int64_t y, std::uint32_t seed) {
    std::uint64_t h = static_cast<std::uint64_t>(x) * 0x8DA6B343u ^ static_cast<std::uint64_t>(y) * 0xD8163841u ^
                      seed * 0xCB1AB31Fu;
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ull;
    return static_cast<std::uint32_t>(h >> 32);
}

struct Colour {
    double r = 0, g = 0, b = 0;
};

Colour mix(Colour a, Colour b, double t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

Colour randomColour(Random& random, double lo, double hi) {
    return {lo + (hi - lo) * random.unit(), lo + (hi - lo) * random.unit(), lo + (hi - lo) * random.unit()};
}

struct Box {
    std::int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;  // half-open
    Box clipped(const Box& o) const {
        return {std::max(x0, o.x0), std::max(y0, o.y0), std::min(x1, o.x1), std::min(y1, o.y1)};
    }
};

// Smooth noise in [0, 1]: random values on a lattice, interpolated with smoothstep.
class ValueNoise {
public:
    ValueNoise(double cell, std::uint32_t seed) : cell_(cell), seed_(seed) {}
    double at(double x, double y) const {
        const double fx = x / cell_, fy = y / cell_;
        const auto ix = static_cast<std::int64_t>(std::floor(fx)), iy = static_cast<std::int64_t>(std::floor(fy));
        const double tx = smooth(fx - static_cast<double>(ix)), ty = smooth(fy - static_cast<double>(iy));
        const double top = lerp(corner(ix, iy), corner(ix + 1, iy), tx);
        const double bottom = lerp(corner(ix, iy + 1), corner(ix + 1, iy + 1), tx);
        return lerp(top, bottom, ty);
    }

private:
    static double smooth(double t) { return t * t * (3 - 2 * t); }
    static double lerp(double a, double b, double t) { return a + (b - a) * t; }
    double corner(std::int64_t x, std::int64_t y) const { return (hash3(x, y, seed_) >> 8) * 0x1.0p-24; }
    double cell_;
    std::uint32_t seed_;
};

// Glyph coverage bitmaps: each glyph is a few strokes on a small lattice, rasterised with
// supersampling so that edges are anti-aliased as real text is.
class Font {
public:
    explicit Font(double scale)
        : width_(std::max<std::int64_t>(1, std::lround(7 * scale))),
          height_(std::max<std::int64_t>(1, std::lround(12 * scale))) {
        Random random(0xF0E7);
        for (auto& glyph : glyphs_) glyph = rasterise(random, scale);
    }
    std::int64_t advance() const { return width_ + std::max<std::int64_t>(1, width_ / 7); }
    std::int64_t height() const { return height_; }
    std::int64_t width() const { return width_; }
    const std::vector<std::uint8_t>& glyph(std::size_t i) const { return glyphs_[i % glyphs_.size()]; }
    static constexpr std::size_t count = 80;

private:
    std::vector<std::uint8_t> rasterise(Random& random, double scale) const {
        struct Stroke {
            double ax, ay, bx, by;
        };
        const std::array<double, 3> columns = {1.0, 3.5, 6.0};
        const std::array<double, 4> rows = {2.5, 5.5, 8.5, 11.0};
        std::vector<Stroke> strokes;
        const auto n = random.between(2, 4);
        for (std::int64_t i = 0; i < n; ++i) {
            strokes.push_back({columns[random.next() % 3], rows[random.next() % 4], columns[random.next() % 3],
                               rows[random.next() % 4]});
        }
        std::vector<std::uint8_t> coverage(static_cast<std::size_t>(width_ * height_));
        const double halfWidth = 0.6;
        for (std::int64_t y = 0; y < height_; ++y) {
            for (std::int64_t x = 0; x < width_; ++x) {
                int hits = 0;
                for (int sy = 0; sy < 3; ++sy) {
                    for (int sx = 0; sx < 3; ++sx) {
                        const double px = (static_cast<double>(x) + (sx + 0.5) / 3) / scale;
                        const double py = (static_cast<double>(y) + (sy + 0.5) / 3) / scale;
                        for (const Stroke& s : strokes) {
                            if (distance(px, py, s) <= halfWidth) {
                                ++hits;
                                break;
                            }
                        }
                    }
                }
                coverage[static_cast<std::size_t>(y * width_ + x)] = static_cast<std::uint8_t>(hits * 255 / 9);
            }
        }
        return coverage;
    }
    template <typename S>
    static double distance(double px, double py, const S& s) {
        const double dx = s.bx - s.ax, dy = s.by - s.ay;
        const double length2 = dx * dx + dy * dy;
        double t = length2 > 0 ? ((px - s.ax) * dx + (py - s.ay) * dy) / length2 : 0;
        t = std::clamp(t, 0.0, 1.0);
        return std::hypot(px - (s.ax + t * dx), py - (s.ay + t * dy));
    }

    std::int64_t width_;
    std::int64_t height_;
    std::array<std::vector<std::uint8_t>, count> glyphs_;
};

class Painter {
public:
    Painter(BgraImage& image, double scale, std::uint32_t seed) : image_(image), scale_(scale), font_(scale), seed_(seed) {}

    std::int64_t px(double points) const { return std::max<std::int64_t>(1, std::lround(points * scale_)); }
    const Font& font() const { return font_; }
    Box bounds() const { return {0, 0, image_.width, image_.height}; }

    void blend(std::int64_t x, std::int64_t y, Colour c, double alpha) {
        std::uint8_t* p = image_.pixel(x, y);
        const auto channel = [alpha](std::uint8_t old, double value) {
            return static_cast<std::uint8_t>(std::clamp(std::lround(old + (value - old) * alpha), 0l, 255l));
        };
        p[0] = channel(p[0], c.b);
        p[1] = channel(p[1], c.g);
        p[2] = channel(p[2], c.r);
        // Sources leave alpha undefined for opaque screens; the encoder must ignore it.
        p[3] = static_cast<std::uint8_t>(hash3(x, y, seed_) & 0xFF);
    }
    void fill(Box box, Colour c, double alpha = 1) {
        box = box.clipped(bounds());
        for (std::int64_t y = box.y0; y < box.y1; ++y)
            for (std::int64_t x = box.x0; x < box.x1; ++x) blend(x, y, c, alpha);
    }
    void verticalGradient(Box box, Colour top, Colour bottom) {
        const Box clip = box.clipped(bounds());
        for (std::int64_t y = clip.y0; y < clip.y1; ++y) {
            const double t = static_cast<double>(y - box.y0) / static_cast<double>(std::max<std::int64_t>(1, box.y1 - box.y0 - 1));
            for (std::int64_t x = clip.x0; x < clip.x1; ++x) blend(x, y, mix(top, bottom, t), 1);
        }
    }
    void disc(double cx, double cy, double radius, Colour c) {
        const Box box = Box{static_cast<std::int64_t>(cx - radius - 1), static_cast<std::int64_t>(cy - radius - 1),
                            static_cast<std::int64_t>(cx + radius + 2), static_cast<std::int64_t>(cy + radius + 2)}
                            .clipped(bounds());
        for (std::int64_t y = box.y0; y < box.y1; ++y) {
            for (std::int64_t x = box.x0; x < box.x1; ++x) {
                const double d = std::hypot(static_cast<double>(x) + 0.5 - cx, static_cast<double>(y) + 0.5 - cy);
                const double coverage = std::clamp(radius - d + 0.5, 0.0, 1.0);
                if (coverage > 0) blend(x, y, c, coverage);
            }
        }
    }
    // A soft shadow around a box, fading out over `spread` pixels.
    void shadow(Box box, std::int64_t spread) {
        const Box outer = Box{box.x0 - spread, box.y0 - spread / 2, box.x1 + spread, box.y1 + spread}.clipped(bounds());
        for (std::int64_t y = outer.y0; y < outer.y1; ++y) {
            for (std::int64_t x = outer.x0; x < outer.x1; ++x) {
                const std::int64_t dx = std::max({box.x0 - x, x - box.x1 + 1, std::int64_t{0}});
                const std::int64_t dy = std::max({box.y0 - y, y - box.y1 + 1, std::int64_t{0}});
                const double d = std::hypot(static_cast<double>(dx), static_cast<double>(dy));
                if (d > 0 && d < static_cast<double>(spread)) blend(x, y, {0, 0, 0}, 0.25 * (1 - d / static_cast<double>(spread)));
            }
        }
    }
    void glyph(std::int64_t x, std::int64_t y, std::size_t index, Colour c, Box clip) {
        clip = clip.clipped(bounds());
        const auto& coverage = font_.glyph(index);
        for (std::int64_t gy = 0; gy < font_.height(); ++gy) {
            for (std::int64_t gx = 0; gx < font_.width(); ++gx) {
                const std::uint8_t a = coverage[static_cast<std::size_t>(gy * font_.width() + gx)];
                const std::int64_t tx = x + gx, ty = y + gy;
                if (a == 0 || tx < clip.x0 || tx >= clip.x1 || ty < clip.y0 || ty >= clip.y1) continue;
                blend(tx, ty, c, a / 255.0);
            }
        }
    }
    // Words of random glyphs from the left edge of `line` until it is full; returns the width used.
    std::int64_t words(Random& random, std::int64_t x, std::int64_t y, std::int64_t right, Colour c, Box clip) {
        const std::int64_t start = x;
        while (true) {
            const auto length = random.between(1, 9);
            if (x + length * font_.advance() > right) break;
            for (std::int64_t i = 0; i < length; ++i, x += font_.advance()) glyph(x, y, random.next() % Font::count, c, clip);
            x += font_.advance();
        }
        return x - start;
    }

private:
    BgraImage& image_;
    double scale_;
    Font font_;
    std::uint32_t seed_;
};

void paintWallpaper(BgraImage& image, std::uint32_t seed) {
    Random random(seed);
    const Colour from = randomColour(random, 20, 120), to = randomColour(random, 90, 230);
    const ValueNoise clouds(static_cast<double>(image.width) / 9.0, seed), detail(static_cast<double>(image.width) / 60.0, seed + 7);
    for (std::int64_t y = 0; y < image.height; ++y) {
        for (std::int64_t x = 0; x < image.width; ++x) {
            const double t = (static_cast<double>(x) / static_cast<double>(image.width) +
                              static_cast<double>(y) / static_cast<double>(image.height)) / 2;
            const double light = 60 * (clouds.at(static_cast<double>(x), static_cast<double>(y)) - 0.5) +
                                 20 * (detail.at(static_cast<double>(x), static_cast<double>(y)) - 0.5);
            const double grain = static_cast<double>(hash3(x, y, seed) % 7) - 3;  // photographic noise
            const Colour c = mix(from, to, t);
            std::uint8_t* p = image.pixel(x, y);
            p[0] = static_cast<std::uint8_t>(std::clamp(std::lround(c.b + light + grain), 0l, 255l));
            p[1] = static_cast<std::uint8_t>(std::clamp(std::lround(c.g + light + grain), 0l, 255l));
            p[2] = static_cast<std::uint8_t>(std::clamp(std::lround(c.r + light + grain), 0l, 255l));
            p[3] = static_cast<std::uint8_t>(hash3(x, y, seed + 1) & 0xFF);
        }
    }
}

void paintPhoto(Painter& painter, Box box, Random& random, std::uint32_t seed) {
    const Colour a = randomColour(random, 0, 255), b = randomColour(random, 0, 255), c = randomColour(random, 0, 255);
    const ValueNoise shape(static_cast<double>(box.x1 - box.x0) / 4.0, seed + 11), texture(7.0, seed + 13);
    box = box.clipped(painter.bounds());
    for (std::int64_t y = box.y0; y < box.y1; ++y) {
        for (std::int64_t x = box.x0; x < box.x1; ++x) {
            const double s = shape.at(static_cast<double>(x), static_cast<double>(y));
            const double t = texture.at(static_cast<double>(x), static_cast<double>(y));
            const Colour base = s < 0.5 ? mix(a, b, s * 2) : mix(b, c, s * 2 - 1);
            const double grain = static_cast<double>(hash3(x, y, seed + 3) % 9) - 4;
            painter.blend(x, y, {base.r * (0.8 + 0.4 * t) + grain, base.g * (0.8 + 0.4 * t) + grain,
                                 base.b * (0.8 + 0.4 * t) + grain}, 1);
        }
    }
}

void paintWindow(Painter& painter, Box frame, std::int64_t kind, Random& random, std::uint32_t seed) {
    const std::int64_t titleHeight = painter.px(28);
    painter.shadow(frame, painter.px(14));
    const bool dark = kind == 3;
    const Colour page = dark ? Colour{30, 31, 36} : Colour{255, 255, 255};
    painter.fill(frame, page);
    painter.verticalGradient({frame.x0, frame.y0, frame.x1, frame.y0 + titleHeight},
                             dark ? Colour{60, 60, 66} : Colour{238, 238, 238}, dark ? Colour{48, 48, 52} : Colour{214, 214, 214});
    const std::array<Colour, 3> lights = {Colour{255, 95, 87}, Colour{254, 188, 46}, Colour{40, 200, 64}};
    for (std::size_t i = 0; i < lights.size(); ++i) {
        painter.disc(static_cast<double>(frame.x0 + painter.px(14 + 20 * static_cast<double>(i))),
                     static_cast<double>(frame.y0 + titleHeight / 2), static_cast<double>(painter.px(6)), lights[i]);
    }
    const Colour ink = dark ? Colour{210, 210, 215} : Colour{30, 30, 30};
    const std::int64_t titleX = (frame.x0 + frame.x1) / 2 - painter.px(60);
    const Box content{frame.x0 + 1, frame.y0 + titleHeight, frame.x1 - 1, frame.y1 - 1};
    painter.words(random, titleX, frame.y0 + (titleHeight - painter.font().height()) / 2, titleX + painter.px(120), ink, frame);
    // Hairline border.
    const Colour edge = dark ? Colour{80, 80, 86} : Colour{190, 190, 190};
    painter.fill({frame.x0, frame.y0, frame.x1, frame.y0 + 1}, edge);
    painter.fill({frame.x0, frame.y1 - 1, frame.x1, frame.y1}, edge);
    painter.fill({frame.x0, frame.y0, frame.x0 + 1, frame.y1}, edge);
    painter.fill({frame.x1 - 1, frame.y0, frame.x1, frame.y1}, edge);

    std::int64_t textLeft = content.x0 + painter.px(16);
    if (kind == 1) {  // a sidebar of items with icons
        const std::int64_t sidebar = content.x0 + painter.px(180);
        painter.fill({content.x0, content.y0, sidebar, content.y1}, {236, 236, 240});
        for (std::int64_t y = content.y0 + painter.px(10); y + painter.px(20) < content.y1; y += painter.px(24)) {
            painter.fill({content.x0 + painter.px(12), y, content.x0 + painter.px(28), y + painter.px(16)},
                         randomColour(random, 60, 200));
            painter.words(random, content.x0 + painter.px(36), y + painter.px(2), sidebar - painter.px(8), {60, 60, 70}, content);
        }
        textLeft = sidebar + painter.px(16);
    }
    if (kind == 2) {  // a photo viewer
        paintPhoto(painter, {content.x0 + painter.px(12), content.y0 + painter.px(12), content.x1 - painter.px(12),
                             content.y1 - painter.px(12)}, random, seed);
        return;
    }
    const std::int64_t lineHeight = painter.px(18);
    for (std::int64_t y = content.y0 + painter.px(12); y + lineHeight < content.y1; y += lineHeight) {
        if (random.next() % 9 == 0) continue;  // paragraph break
        Colour lineInk = ink;
        if (dark) lineInk = randomColour(random, 120, 250);  // syntax colouring
        const std::int64_t indent = dark ? painter.px(static_cast<double>(random.between(0, 4) * 16)) : 0;
        const std::int64_t right = content.x1 - painter.px(16) - (random.next() % 3 == 0 ? painter.px(200) : 0);
        painter.words(random, textLeft + indent, y, right, lineInk, content);
    }
}

void paintMenuBar(Painter& painter, Random& random, std::int64_t width) {
    const std::int64_t height = painter.px(24);
    painter.fill({0, 0, width, height}, {246, 246, 246}, 0.85);
    const std::int64_t baseline = (height - painter.font().height()) / 2;
    painter.words(random, painter.px(12), baseline, width / 2, {20, 20, 20}, painter.bounds());
    painter.words(random, width - painter.px(220), baseline, width - painter.px(12), {20, 20, 20}, painter.bounds());
}

void paintDock(Painter& painter, Random& random, std::int64_t width, std::int64_t height) {
    const std::int64_t icon = painter.px(48), gap = painter.px(10);
    const std::int64_t count = 12;
    const std::int64_t dockWidth = count * (icon + gap) + gap;
    const Box dock{(width - dockWidth) / 2, height - icon - 2 * gap, (width + dockWidth) / 2, height - painter.px(4)};
    painter.fill(dock, {230, 230, 235}, 0.6);
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int64_t x = dock.x0 + gap + i * (icon + gap);
        const Colour top = randomColour(random, 80, 255);
        painter.verticalGradient({x, dock.y0 + gap, x + icon, dock.y0 + gap + icon}, top, mix(top, {0, 0, 0}, 0.45));
        painter.glyph(x + icon / 2 - painter.font().width() / 2, dock.y0 + gap + icon / 2 - painter.font().height() / 2,
                      random.next() % Font::count, {255, 255, 255}, painter.bounds());
    }
}

}  // namespace

BgraImage renderDesktop(std::int64_t width, std::int64_t height, std::uint32_t seed, std::int64_t rowPadding) {
    BgraImage image{width, height, width * 4 + rowPadding, {}};
    image.bytes.assign(static_cast<std::size_t>(image.bytesPerRow * height), 0);
    paintWallpaper(image, seed);
    Painter painter(image, static_cast<double>(width) / 1440.0, seed);
    Random random(seed);
    const std::int64_t windows = random.between(4, 6);
    for (std::int64_t i = 0; i < windows; ++i) {
        const std::int64_t w = static_cast<std::int64_t>(static_cast<double>(width) * (0.35 + 0.35 * random.unit()));
        const std::int64_t h = static_cast<std::int64_t>(static_cast<double>(height) * (0.35 + 0.4 * random.unit()));
        const std::int64_t x = random.between(0, std::max<std::int64_t>(0, width - w));
        const std::int64_t y = painter.px(24) + random.between(0, std::max<std::int64_t>(0, height - h - painter.px(24)));
        paintWindow(painter, {x, y, x + w, y + h}, i % 4, random, seed + static_cast<std::uint32_t>(i));
    }
    paintMenuBar(painter, random, width);
    paintDock(painter, random, width, height);
    return image;
}

std::int64_t retypeTiles(BgraImage& image, double share, std::uint32_t seed) {
    constexpr std::int64_t tile = 64;
    const std::int64_t columns = (image.width + tile - 1) / tile, rows = (image.height + tile - 1) / tile;
    const auto wanted = std::min(columns * rows, static_cast<std::int64_t>(std::lround(share * static_cast<double>(columns * rows))));
    std::vector<bool> chosen(static_cast<std::size_t>(columns * rows));
    Random random(seed);
    Painter painter(image, static_cast<double>(image.width) / 1440.0, seed);
    for (std::int64_t done = 0; done < wanted;) {
        const auto index = random.between(0, columns * rows - 1);
        if (chosen[static_cast<std::size_t>(index)]) continue;
        chosen[static_cast<std::size_t>(index)] = true;
        ++done;
        const Box box{index % columns * tile, index / columns * tile, std::min(image.width, (index % columns + 1) * tile),
                      std::min(image.height, (index / columns + 1) * tile)};
        const std::int64_t lineTop = box.y0 + random.between(0, std::max<std::int64_t>(0, box.y1 - box.y0 - painter.font().height()));
        const std::array<std::uint8_t, 3> before = {image.pixel(box.x0, box.y0)[0], image.pixel(box.x0, box.y0)[1],
                                                    image.pixel(box.x0, box.y0)[2]};
        painter.fill(Box{box.x0, lineTop, box.x1, lineTop + painter.font().height()}.clipped(box), {250, 250, 250});
        painter.words(random, box.x0, lineTop, box.x1, {20, 20, 120}, box);
        // A text caret at the tile's origin makes sure the tile changed even where the new line
        // happened to match what was there.
        std::uint8_t* corner = image.pixel(box.x0, box.y0);
        corner[0] = static_cast<std::uint8_t>(before[0] ^ 0x80);
        corner[1] = before[1];
        corner[2] = before[2];
    }
    return wanted;
}

}  // namespace brisko::testing
