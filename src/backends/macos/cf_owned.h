#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace brisko::platform::macos {

struct CFReleaser {
    void operator()(CFTypeRef ref) const { CFRelease(ref); }
};

// A Core Foundation object that this code created or copied, released when it goes; empty for
// NULL.
template <typename Ref>
using CFOwned = std::unique_ptr<std::remove_pointer_t<Ref>, CFReleaser>;

}  // namespace brisko::platform::macos
