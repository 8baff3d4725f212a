#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace brisko {

// A byte buffer for data that is always written before it is read: growing it leaves the new
// bytes uninitialised, so a frame-sized buffer costs no zero-filling pass, and pages the encoder
// never writes (the unused room of compressed tiles) are never touched.
class OverwriteBuffer {
public:
    std::uint8_t* data() { return bytes_.get(); }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

    // Sets the size; the contents are undefined afterwards whenever the size grew past what the
    // buffer ever held.
    void resize(std::size_t size) {
        if (size > capacity_) {
            bytes_ = std::make_unique_for_overwrite<std::uint8_t[]>(size);
            capacity_ = size;
        }
        size_ = size;
    }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace brisko
