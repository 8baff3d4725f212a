#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>

#include "platform/property_number.h"

namespace brisko::platform::macos {

// The UTF-8 bytes of a string; empty for nil.
std::string utf8(NSString* text);

// What an error says to a person; absent for no error.
std::optional<std::string> describe(NSError* error);

// A number of a system dictionary as it holds it, integer or floating point; absent when the
// value is no number.
std::optional<PropertyNumber> propertyNumber(id value);

// Runs start, which hands `finished` to a completion handler, and waits until the handler has
// called it. Completion handlers run on the system's own queues, so this may wait on any thread,
// the main one included.
void awaitCompletion(void (^start)(dispatch_block_t finished));

}  // namespace brisko::platform::macos
