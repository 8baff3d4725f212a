#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace brisko::platform {

using Bytes = std::vector<std::uint8_t>;

// The general clipboard.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    virtual std::int64_t changeCount() = 0;
    // One entry per item, each the item's types in the item's order.
    virtual std::vector<std::vector<std::string>> itemTypes() = 0;
    // The data an item provides for a type; absent when it provides none.
    virtual std::optional<Bytes> data(std::size_t item, const std::string& type) = 0;
    virtual void clearContents() = 0;
    virtual void setData(const std::string& type, const Bytes& data) = 0;
    virtual void setPlainText(const std::string& utf8) = 0;
    // The platform's access behaviour number: 0 default, 1 ask, 2 always allow, 3 always deny.
    virtual std::int64_t accessBehavior() = 0;
};

}  // namespace brisko::platform
