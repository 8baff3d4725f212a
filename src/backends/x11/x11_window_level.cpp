#include "backends/x11/x11_window_level.h"

#include <algorithm>

namespace brisko::platform::x11 {
namespace {

// The window server's levels for the same roles.
constexpr std::int64_t normalLayer = 0;
constexpr std::int64_t floatingLayer = 3;
constexpr std::int64_t dockLayer = 20;
constexpr std::int64_t overlayLayer = 102;
constexpr std::int64_t helpLayer = 200;
constexpr std::int64_t draggingLayer = 500;

}  // namespace

const std::vector<std::pair<std::string_view, WindowKind>>& windowTypeKinds() {
    static const std::vector<std::pair<std::string_view, WindowKind>> kinds = {
        {"_NET_WM_WINDOW_TYPE_DESKTOP", WindowKind::desktop},
        {"_NET_WM_WINDOW_TYPE_DOCK", WindowKind::dock},
        {"_NET_WM_WINDOW_TYPE_TOOLBAR", WindowKind::normal},
        {"_NET_WM_WINDOW_TYPE_MENU", WindowKind::menu},
        {"_NET_WM_WINDOW_TYPE_UTILITY", WindowKind::normal},
        {"_NET_WM_WINDOW_TYPE_SPLASH", WindowKind::normal},
        {"_NET_WM_WINDOW_TYPE_DIALOG", WindowKind::normal},
        {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", WindowKind::popUpMenu},
        {"_NET_WM_WINDOW_TYPE_POPUP_MENU", WindowKind::popUpMenu},
        {"_NET_WM_WINDOW_TYPE_TOOLTIP", WindowKind::tooltip},
        {"_NET_WM_WINDOW_TYPE_NOTIFICATION", WindowKind::notification},
        {"_NET_WM_WINDOW_TYPE_COMBO", WindowKind::popUpMenu},
        {"_NET_WM_WINDOW_TYPE_DND", WindowKind::dragAndDrop},
        {"_NET_WM_WINDOW_TYPE_NORMAL", WindowKind::normal},
    };
    return kinds;
}

std::int64_t windowLayer(std::optional<WindowKind> kind, bool keptAbove, bool overrideRedirect,
                         std::int64_t popUpMenuLayer) {
    if (!kind) kind = overrideRedirect ? WindowKind::popUpMenu : WindowKind::normal;
    std::int64_t layer = normalLayer;
    switch (*kind) {
        case WindowKind::desktop:
        case WindowKind::normal: layer = normalLayer; break;
        case WindowKind::dock: layer = dockLayer; break;
        case WindowKind::menu: layer = overrideRedirect ? popUpMenuLayer : floatingLayer; break;
        case WindowKind::popUpMenu: layer = popUpMenuLayer; break;
        case WindowKind::notification: layer = overlayLayer; break;
        case WindowKind::tooltip: layer = helpLayer; break;
        case WindowKind::dragAndDrop: layer = draggingLayer; break;
    }
    return keptAbove ? std::max(layer, floatingLayer) : layer;
}

}  // namespace brisko::platform::x11
