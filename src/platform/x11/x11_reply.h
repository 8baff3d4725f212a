#pragma once

#include <cstdlib>
#include <memory>

namespace brisko::platform::x11 {

// XCB hands out replies allocated with malloc; the caller frees them.
struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

}  // namespace brisko::platform::x11
