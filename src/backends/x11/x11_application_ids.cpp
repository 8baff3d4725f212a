#include "backends/x11/x11_application_ids.h"

#include "backends/x11/x11_property.h"

namespace brisko::platform::x11 {
namespace {

// WM_CLASS holds two NUL-terminated strings: the instance name, then the class name.
std::string classPart(const std::string& wmClass) {
    const auto end = wmClass.find('\0');
    if (end == std::string::npos) return {};
    const std::string rest = wmClass.substr(end + 1);
    return rest.substr(0, rest.find('\0'));
}

}  // namespace

std::vector<ApplicationIdHints> applicationIdHints(xcb_connection_t* connection, xcb_atom_t gtkApplicationId,
                                                   const std::vector<xcb_window_t>& windows) {
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> cookies;
    cookies.reserve(windows.size());
    for (const xcb_window_t w : windows) {
        cookies.emplace_back(requestProperty(connection, w, gtkApplicationId),
                             requestProperty(connection, w, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING));
    }
    std::vector<ApplicationIdHints> hints;
    hints.reserve(windows.size());
    for (const auto& [gtk, wmClass] : cookies) {
        const auto gtkReply = propertyReply(connection, gtk);
        const auto classReply = propertyReply(connection, wmClass);
        hints.push_back({bytesIn(gtkReply.get()), classPart(bytesIn(classReply.get()))});
    }
    return hints;
}

std::optional<std::string> applicationId(const std::vector<ApplicationIdHints>& windowsOfOneProcess) {
    for (const auto& hints : windowsOfOneProcess) {
        if (!hints.gtkApplicationId.empty()) return hints.gtkApplicationId;
    }
    for (const auto& hints : windowsOfOneProcess) {
        if (!hints.wmClass.empty()) return hints.wmClass;
    }
    return std::nullopt;
}

}  // namespace brisko::platform::x11
