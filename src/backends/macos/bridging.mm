#include "backends/macos/bridging.h"

#include <cstring>
#include <limits>

namespace brisko::platform::macos {

std::string utf8(NSString* text) {
    const char* bytes = text.UTF8String;
    return bytes ? std::string(bytes) : std::string();
}

std::optional<std::string> describe(NSError* error) {
    if (!error) return std::nullopt;
    return utf8(error.localizedDescription);
}

std::optional<PropertyNumber> propertyNumber(id value) {
    if (![value isKindOfClass:[NSNumber class]]) return std::nullopt;
    NSNumber* number = value;
    const char* type = number.objCType;
    if (std::strcmp(type, @encode(double)) == 0 || std::strcmp(type, @encode(float)) == 0) return number.doubleValue;
    // Unsigned values past the signed range keep their magnitude, if not every digit.
    if (std::strcmp(type, @encode(unsigned long long)) == 0 &&
        number.unsignedLongLongValue > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max())) {
        return number.doubleValue;
    }
    return static_cast<std::int64_t>(number.longLongValue);
}

void awaitCompletion(void (^start)(dispatch_block_t finished)) {
    dispatch_semaphore_t done = dispatch_semaphore_create(0);
    start(^{
      dispatch_semaphore_signal(done);
    });
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
}

}  // namespace brisko::platform::macos
