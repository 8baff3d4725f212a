#include "backends/x11/x11_shm_image.h"

#include <cstring>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <xcb/shm.h>

#include "backends/x11/x11_connection.h"

namespace brisko::platform::x11 {
namespace {

constexpr std::uint32_t allPlanes = 0xffffffffu;

bool layoutDepth(std::uint8_t depth) { return depth == 24 || depth == 32; }

}  // namespace

ShmImage::ShmImage(xcb_connection_t* connection, std::size_t maxPixels)
    : connection_(connection), bytes_(maxPixels * 4) {
    const xcb_query_extension_reply_t* shm = xcb_get_extension_data(connection, &xcb_shm_id);
    if (!shm || !shm->present || bytes_ == 0 || !attach()) copied_.resize(bytes_);
}

bool ShmImage::attach() {
    const int id = ::shmget(IPC_PRIVATE, bytes_, IPC_CREAT | 0600);
    if (id < 0) return false;
    void* memory = ::shmat(id, nullptr, 0);
    const xcb_shm_seg_t segment = xcb_generate_id(connection_);
    const bool attached = memory != reinterpret_cast<void*>(-1) &&
                          XcbReply<xcb_generic_error_t>(xcb_request_check(
                              connection_, xcb_shm_attach_checked(connection_, segment, static_cast<std::uint32_t>(id), 0))) ==
                              nullptr;
    // Marked for removal now: it goes away when both sides have let go, even if this process dies.
    ::shmctl(id, IPC_RMID, nullptr);
    if (!attached) {
        if (memory != reinterpret_cast<void*>(-1)) ::shmdt(memory);
        return false;
    }
    segment_ = segment;
    memory_ = static_cast<std::uint8_t*>(memory);
    return true;
}

ShmImage::~ShmImage() {
    if (segment_ == XCB_NONE) return;
    xcb_shm_detach(connection_, segment_);
    xcb_flush(connection_);
    ::shmdt(memory_);
}

std::uint8_t* ShmImage::read(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                             std::uint16_t height, std::size_t offset) {
    if (offset + std::size_t{width} * height * 4 > bytes_ || width == 0 || height == 0) return nullptr;
    return shared() ? readShared(drawable, x, y, width, height, offset)
                    : readCopied(drawable, x, y, width, height, offset);
}

std::uint8_t* ShmImage::readShared(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                                   std::uint16_t height, std::size_t offset) {
    const XcbReply<xcb_shm_get_image_reply_t> reply(xcb_shm_get_image_reply(
        connection_,
        xcb_shm_get_image(connection_, drawable, x, y, width, height, allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP, segment_,
                          static_cast<std::uint32_t>(offset)),
        nullptr));
    if (!reply || !layoutDepth(reply->depth)) return nullptr;
    return memory_ + offset;
}

std::uint8_t* ShmImage::readCopied(xcb_drawable_t drawable, std::int16_t x, std::int16_t y, std::uint16_t width,
                                   std::uint16_t height, std::size_t offset) {
    const XcbReply<xcb_get_image_reply_t> reply(xcb_get_image_reply(
        connection_, xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, x, y, width, height, allPlanes),
        nullptr));
    const std::size_t bytes = std::size_t{width} * height * 4;
    if (!reply || !layoutDepth(reply->depth) || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < bytes) {
        return nullptr;
    }
    std::memcpy(copied_.data() + offset, xcb_get_image_data(reply.get()), bytes);
    return copied_.data() + offset;
}

std::optional<std::string> unsupportedPixelLayout(xcb_connection_t* connection, const xcb_screen_t& screen) {
    const xcb_setup_t* setup = xcb_get_setup(connection);
    if (setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return "the X server sends pixels most significant byte first";
    bool thirtyTwoBits = false;
    for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem; xcb_format_next(&formats)) {
        if (formats.data->depth == screen.root_depth) thirtyTwoBits = formats.data->bits_per_pixel == 32;
    }
    if (!layoutDepth(screen.root_depth) || !thirtyTwoBits) {
        return "the screen is " + std::to_string(screen.root_depth) + " bits deep; only 24 and 32 are read";
    }
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem; xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem; xcb_visualtype_next(&visuals)) {
            const xcb_visualtype_t& v = *visuals.data;
            if (v.visual_id != screen.root_visual) continue;
            if (v.red_mask != 0xff0000 || v.green_mask != 0xff00 || v.blue_mask != 0xff) {
                return std::string("the screen's colour masks are not 8-bit red, green, blue");
            }
            return std::nullopt;
        }
    }
    return std::string("the screen's visual is not listed");
}

}  // namespace brisko::platform::x11
