// The general pasteboard.
#import <AppKit/AppKit.h>

#include "backends/macos/bridging.h"
#include "backends/macos/macos_services.h"

namespace brisko::platform::macos {
namespace {

// The access behaviour "always allow": what a system without per-application pasteboard access
// (before macOS 15.4) does for every process.
constexpr std::int64_t alwaysAllow = 2;

// Nil for bytes that are not UTF-8.
NSString* text(const std::string& utf8Text) {
    return [[NSString alloc] initWithBytes:utf8Text.data() length:utf8Text.size() encoding:NSUTF8StringEncoding];
}

class MacPasteboard final : public Pasteboard {
public:
    std::int64_t changeCount() override { return NSPasteboard.generalPasteboard.changeCount; }

    // The items are kept, so that data() reads the same items whose types were listed.
    std::vector<std::vector<std::string>> itemTypes() override {
        @autoreleasepool {
            NSArray<NSPasteboardItem*>* items = NSPasteboard.generalPasteboard.pasteboardItems;
            items_ = items ? items : @[];
            std::vector<std::vector<std::string>> types;
            for (NSPasteboardItem* item in items_) {
                std::vector<std::string>& listed = types.emplace_back();
                for (NSPasteboardType type in item.types) listed.push_back(utf8(type));
            }
            return types;
        }
    }

    std::optional<Bytes> data(std::size_t item, const std::string& type) override {
        @autoreleasepool {
            NSString* name = text(type);
            if (item >= items_.count || !name) return std::nullopt;
            NSData* found = [items_[item] dataForType:name];
            if (!found) return std::nullopt;
            const auto* bytes = static_cast<const std::uint8_t*>(found.bytes);
            return Bytes(bytes, bytes + found.length);
        }
    }

    void clearContents() override { [NSPasteboard.generalPasteboard clearContents]; }

    void setData(const std::string& type, const Bytes& bytes) override {
        @autoreleasepool {
            NSString* name = text(type);
            if (!name) return;
            [NSPasteboard.generalPasteboard setData:[NSData dataWithBytes:bytes.data() length:bytes.size()]
                                            forType:name];
        }
    }

    void setPlainText(const std::string& utf8Text) override {
        @autoreleasepool {
            NSString* string = text(utf8Text);
            [NSPasteboard.generalPasteboard setString:string ? string : @"" forType:NSPasteboardTypeString];
        }
    }

    // The property arrived with macOS 15.4, after the SDK this builds against: it is looked up
    // at run time.
    std::int64_t accessBehavior() override {
        NSPasteboard* general = NSPasteboard.generalPasteboard;
        const SEL property = NSSelectorFromString(@"accessBehavior");
        if (![general respondsToSelector:property]) return alwaysAllow;
        using Getter = NSInteger (*)(id, SEL);
        return reinterpret_cast<Getter>([general methodForSelector:property])(general, property);
    }

private:
    NSArray<NSPasteboardItem*>* items_ = @[];
};

}  // namespace

std::unique_ptr<Pasteboard> makePasteboard() { return std::make_unique<MacPasteboard>(); }

}  // namespace brisko::platform::macos
